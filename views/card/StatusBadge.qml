import QtQuick
import Tidewick

// The circle that shows whether a listener answers: green with a pulsing ring, or grey.
Item {
    id: badge

    required property bool isLive
    property bool isStill
    readonly property bool isPulsing: isLive && !isStill && visible && Window.visibility !== Window.Hidden
    // How far out the ring rests, from 0 to 1.
    property real pulse: 1

    width: 42
    height: 42
    onIsPulsingChanged: {
        if (!isPulsing)
            pulse = 1;
    }

    component Swing: NumberAnimation {
        duration: 1800
        easing.type: Easing.InOutQuad
    }

    SequentialAnimation {
        objectName: "pulsing"
        running: badge.isPulsing
        loops: Animation.Infinite

        Swing {
            target: badge
            property: "pulse"
            from: 0
            to: 1
        }
        Swing {
            target: badge
            property: "pulse"
            from: 1
            to: 0
        }
    }

    Colors {
        id: colors
    }

    Rectangle {
        anchors.fill: parent
        radius: width / 2
        color: badge.isLive ? colors.faded(colors.green, 0.15) : colors.white(0.06)
    }

    Ring {
        objectName: "ring"
        anchors.centerIn: parent
        visible: badge.isLive
        opacity: 1 - 0.4 * badge.pulse
        width: 54
        height: 54
        diameter: 42 * (1 + 0.2 * badge.pulse)
        lineWidth: 1.5 * (1 + 0.2 * badge.pulse)
        color: colors.faded(colors.green, 0.4)
    }

    Symbol {
        anchors.centerIn: parent
        name: badge.isLive ? "dot.radiowaves.up.forward" : "circle.fill"
        size: badge.isLive ? 16 : 8
        color: badge.isLive ? colors.green : colors.white(0.25)
    }
}
