import QtQuick
import Tidewick

// The translucent backdrop of what is stacked over it.
Item {
    id: view

    required property int material
    required property int blending
    property int state: VisualEffect.FollowsWindowActiveState
    property bool emphasized: false
    // What lies behind the window.
    property int backdrop: Panel.Opaque
    required property real radius
    readonly property color color: fill.color

    // A window is large, and whole pixels in size; then the simpler rectangle looks the same.
    Rectangle {
        anchors.fill: parent
        visible: !rounded.visible
        radius: view.radius
        color: view.color
    }

    RoundedRectangle {
        id: rounded

        anchors.fill: parent
        visible: view.blending === VisualEffect.WithinWindow
        radius: view.radius
        color: view.color
    }

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
