import QtQuick
import Tidewick

// The circle that tells at a glance whether a listener answers: green and pulsing, or grey.
Item {
    id: badge

    required property bool isLive

    width: 42
    height: 42

    Colors {
        id: colors
    }

    Rectangle {
        anchors.fill: parent
        radius: width / 2
        color: badge.isLive ? colors.faded(colors.green, 0.15) : colors.white(0.06)
    }

    Rectangle {
        id: ring

        anchors.fill: parent
        visible: badge.isLive
        radius: width / 2
        color: "transparent"
        border.color: colors.faded(colors.green, 0.4)
        border.width: 1.5
        scale: 1.2
        opacity: 0.6

        SequentialAnimation {
            running: ring.visible && ring.Window.visibility !== Window.Hidden
            loops: Animation.Infinite

            ParallelAnimation {
                NumberAnimation {
                    target: ring
                    property: "scale"
                    from: 1
                    to: 1.2
                    duration: 1800
                    easing.type: Easing.InOutQuad
                }
                NumberAnimation {
                    target: ring
                    property: "opacity"
                    from: 1
                    to: 0.6
                    duration: 1800
                    easing.type: Easing.InOutQuad
                }
            }
            ParallelAnimation {
                NumberAnimation {
                    target: ring
                    property: "scale"
                    to: 1
                    duration: 1800
                    easing.type: Easing.InOutQuad
                }
                NumberAnimation {
                    target: ring
                    property: "opacity"
                    to: 1
                    duration: 1800
                    easing.type: Easing.InOutQuad
                }
            }
        }
    }

    Symbol {
        anchors.centerIn: parent
        name: badge.isLive ? "dot.radiowaves.up.forward" : "circle.fill"
        size: badge.isLive ? 16 : 8
        color: badge.isLive ? colors.green : colors.white(0.25)
    }
}
