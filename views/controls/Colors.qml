import QtQuick
import Tidewick

// The panel's colours, those of a dark desktop. All others are white or black at some opacity.
QtObject {
    readonly property color green: "#30D158"
    readonly property color blue: "#0A84FF"
    readonly property color red: "#FF453A"
    readonly property color orange: "#FF9F0A"
    readonly property color tip: "#3A3A3C"

    function white(opacity: real): color {
        return Qt.rgba(1, 1, 1, opacity);
    }

    function black(opacity: real): color {
        return Qt.rgba(0, 0, 0, opacity);
    }

    function faded(base: color, opacity: real): color {
        return Qt.rgba(base.r, base.g, base.b, opacity);
    }

    // For a figure that may be high: red, orange, or else white.
    function forLevel(level: int): color {
        return level === CardFacts.High ? faded(red, 0.8) : level === CardFacts.Raised ? faded(orange, 0.8) : white(0.5);
    }
}
