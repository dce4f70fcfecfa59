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
                ask(0);
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

    function test_nothingIsLostInATurn() {
        show([]);
        const arrow = symbol(view, "arrow.clockwise");
        const weight = machine.weightOf(arrow, 0.25);
        for (arrow.angle = 15; arrow.angle < 360; arrow.angle += 30)
            verify(Math.abs(machine.weightOf(arrow, 0.25) / weight - 1) < 0.05, "at " + arrow.angle);
    }

    function test_spinnerIsInTheMiddle() {
        machine.setSlow(true);
        view = viewOf();
        tryVerify(() => findChild(view, "loading").visible);
        const ink = machine.inkOf(symbol(view, "spinner"), 0.05);
        const middle = view.width * Screen.devicePixelRatio / 2;
        verify(Math.abs(ink.x + ink.width / 2 - middle) <= 0.5, ink.x + ink.width / 2 + " of " + middle);
    }

    // What is even is drawn even, at every scale: it looks like its mirror images.
    function test_areEven() {
        show([shop, api]);
        ask(0);
        settle();
        const even = {
            cross: () => find(1, "stop"),
            "grey circle": () => symbol(card(1), "circle.fill"),
            dot: () => findChild(view, "dot")
        };
        for (const name in even) {
            const apart = machine.asymmetryOf(even[name]());
            verify(apart.x <= 0.1 && apart.y <= 0.1, name + " is " + apart + " apart");
        }
        // It lies on the round end of the capsule.
        const cancel = machine.asymmetryOf(find(0, "cancel"), 0.3);
        verify(cancel.x <= 0.15 && cancel.y <= 0.15, "cancelling cross is " + cancel + " apart");
        const chevron = machine.asymmetryOf(find(1, "expand"));
        verify(chevron.x <= 0.1, "chevron is " + chevron + " apart");
    }

    Component {
        id: ground

        Rectangle {
            anchors.fill: parent
            color: "#808080"
        }
    }

    function test_cornersAreEven() {
        createTemporaryObject(ground, test);
        show([shop, api]);
        machine.setBackdrop(Panel.Translucent);
        view.isFrameless = true;
        settle();
        const panel = machine.cornerAsymmetryOf(view, 14);
        verify(panel.x <= 0.1 && panel.y <= 0.1, "panel's corners are " + panel + " apart");
        const quit = machine.cornerAsymmetryOf(findChild(view, "quit"), 6);
        verify(quit.x <= 0.1 && quit.y <= 0.1, "Quit's corners are " + quit + " apart");
        const surface = machine.cornerAsymmetryOf(find(1, "surface"), 14);
        verify(surface.x <= 0.1, "a card's corners are " + surface + " apart");
    }

    function distance(a, b) {
        return Math.hypot(a.r - b.r, a.g - b.g, a.b - b.b);
    }
}
