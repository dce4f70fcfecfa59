import QtQuick
import Tidewick

// The translucent backdrop of what is stacked over it. The fields and their raw values are the
// ones that VisualEffectView.h names.
Rectangle {
    id: view

    required property int material
    required property int blending
    property int state: 0
    property bool emphasized: false
    // What lies behind the window.
    property int backdrop: Panel.Opaque

    color: fill.color

    VisualEffectFill {
        id: fill

        material: view.material
        blending: view.blending
        state: view.state
        emphasized: view.emphasized
        backdrop: view.backdrop
        isWindowActive: view.Window.active
    }
}
