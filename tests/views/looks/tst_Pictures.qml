import QtQuick
import QtTest
import Tidewick

// The panel in its states, and the settings, compared with pictures that were looked at.
// TIDEWICK_KEEP_PICTURES in the environment makes the pictures anew.
LooksCase {
    id: test

    name: "Pictures"

    // What turns stands still, in the same place in every picture.
    function freeze() {
        for (const item of items(view, item => item instanceof Symbol)) {
            const turning = findChild(item, "turning");
            if (!turning || !turning.running)
                continue;
            turning.paused = true;
            item.angle = 45;
        }
    }

    function look(name, item = view) {
        settle();
        if (machine.reasonNotToCompare() !== "")
            skip(machine.reasonNotToCompare());
        compare(machine.differenceFromKept(item, name), "");
    }

    function cleanup() {
        machine.useDesktopsScheme();
        test.endCase();
    }

    function many() {
        return Array.from({
            length: 40
        }, (one, index) => Object.assign({}, index % 2 ? api : shop, {
                port: 4001 + index,
                pid: String(1001 + index),
                directory: "/srv/service-" + (index + 1)
            }));
    }

    function test_loading() {
        machine.setSlow(true);
        view = viewOf();
        tryVerify(() => findChild(view, "loading").visible);
        freeze();
        look("loading");
    }

    function test_empty() {
        show([]);
        look("empty");
    }

    function test_list() {
        show([shop, api]);
        look("list");
    }

    function test_hover() {
        show([shop, api]);
        mouseMove(card(0), 200, 10);
        tryVerify(() => String(findChild(card(0), "surface").color) === String(Qt.rgba(1, 1, 1, 0.06)));
        look("hover");
    }

    function test_confirming() {
        show([shop, api]);
        ask(0);
        tryCompare(findChild(card(0), "confirmation"), "scale", 1);
        look("confirming");
    }

    function test_expanded() {
        show([shop, api]);
        findChild(view, "cards").toggleExpand("3000");
        tryVerify(() => findChild(card(0), "details").opacity === 1);
        look("expanded");
    }

    // A scan that began before the kill brings the killed process's card back.
    function test_killing() {
        show([Object.assign({}, api, { port: 2000 }), shop]);
        machine.setSlow(true);
        machine.panel.refresh();
        tryCompare(machine.panel, "isLoading", true);
        machine.setKill(0, 60000);
        machine.panel.kill("812");
        tryVerify(() => card(1) === null);
        machine.setSlow(false);
        tryCompare(machine.panel, "runningCount", 2);
        tryVerify(() => card(1) !== null);
        ask(1);
        tryCompare(find(1, "confirmation"), "scale", 1);
        tryCompare(card(1), "opacity", 0.5);
        freeze();
        look("killing");
    }

    function test_scrolled() {
        show(many());
        const list = findChild(view, "cards");
        list.positionViewAtIndex(19, ListView.Beginning);
        // Both dividers cut through a card.
        list.contentY = card(19).y + 40;
        look("scrolled");
        compare(card(19).y - list.contentY, -40);
    }

    Component {
        id: ground

        Rectangle {
            anchors.fill: parent
            color: "#5B7FA6"
        }
    }

    // Where the desktop composes the screen.
    function test_rounded() {
        createTemporaryObject(ground, test);
        show([shop, api]);
        machine.setBackdrop(Panel.Translucent);
        view.isFrameless = true;
        look("rounded");
    }

    Component {
        id: settingsComponent

        SettingsView {}
    }

    function test_settings_data() {
        const row = (scheme, isOn) => ({
                tag: "settings-" + scheme + (isOn ? "-on" : ""),
                isDark: scheme === "dark",
                isOn: isOn
            });
        return [row("light", false), row("light", true), row("dark", false), row("dark", true)];
    }

    function test_settings(data) {
        view = viewOf();
        machine.useScheme(data.isDark);
        const settings = createTemporaryObject(settingsComponent, test, {
            settings: machine.settings,
            launchAtLogin: data.isOn
        });
        look(data.tag, settings);
    }
}
