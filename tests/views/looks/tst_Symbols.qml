import QtQuick
import QtTest
import Tidewick

// A symbol is as visible as its colour says: its strongest pixels have that colour.
LooksCase {
    id: test

    name: "Symbols"

    readonly property color green: "#30D158"
    readonly property color red: "#FF453A"

    function row(name, color, opacity) {
        return {
            tag: name,
            name: name,
            color: Qt.rgba(color.r, color.g, color.b, opacity)
        };
    }

    function test_carryTheirColour_data() {
        const white = Qt.rgba(1, 1, 1, 1);
        return [row("arrow.clockwise", white, 0.7), row("dot.radiowaves.up.forward", green, 1), row("circle.fill", white, 0.25), row("arrow.up.forward", white, 1), row("chevron.down", white, 0.5), row("chevron.up", white, 0.5), row("xmark", white, 0.5), row("xmark.circle.fill", red, 0.7), row("folder.fill", white, 0.35), row("moon.zzz.fill", white, 0.15)];
    }

    function test_carryTheirColour(data) {
        const isEmpty = data.name === "moon.zzz.fill";
        show(isEmpty ? [] : [shop, api]);
        if (!isEmpty) {
            findChild(view, "cards").toggleExpand("3000");
            if (data.name === "xmark.circle.fill")
                card(0).ask();
        }
        settle();
        const item = symbol(view, data.name);
        verify(item.visible);
        compare(item.color, data.color);
        const ground = machine.cornerOf(item);
        const ink = machine.strongestPixelOf(item);
        const asked = Qt.tint(ground, data.color);
        const share = distance(ink, ground) / distance(asked, ground);
        verify(Math.abs(share - 1) <= 0.1, data.name + " is at " + ink + ", not at " + asked);
    }

    function distance(a, b) {
        return Math.hypot(a.r - b.r, a.g - b.g, a.b - b.b);
    }
}
