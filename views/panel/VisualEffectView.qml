import QtQuick
import Tidewick

// The translucent backdrop of what is stacked over it.
Rectangle {
    id: view

    required property int material
    required property int blending
    property int state: VisualEffect.FollowsWindowActiveState
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
