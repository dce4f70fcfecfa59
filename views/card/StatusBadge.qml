import QtQuick
import Tidewick

// The circle that shows whether a listener answers: green with a pulsing ring, or grey.
Item {
    id: badge

    required property bool isLive
    required property Pulse pulse
    property bool isInView: true
    readonly property bool isPulsing: isLive && isInView && visible && pulse.isRunning

    width: 42
    height: 42

    Colors {
        id: colors
    }

    RoundedRectangle {
        objectName: "disc"
        anchors.fill: parent
        radius: width / 2
        color: badge.isLive ? colors.faded(colors.green, 0.15) : colors.white(0.06)
    }

    Ring {
        objectName: "ring"
        anchors.centerIn: parent
        visible: badge.isLive
        width: 54
        height: 54
        pulse: badge.isPulsing ? badge.pulse : null
        color: colors.faded(colors.green, 0.4)
    }

    Symbol {
        anchors.centerIn: parent
        name: badge.isLive ? "dot.radiowaves.up.forward" : "circle.fill"
        size: badge.isLive ? 16 : 8
        color: badge.isLive ? colors.green : colors.white(0.25)
    }
}
