import QtQuick
import QtTest
import Tidewick

// No text is truncated, clipped or out of line, whatever the desktop's font. The first three fonts
// are always there; the others are tried where they are installed.
LooksCase {
    id: test

    name: "Fonts"

    function rows() {
        const always = ["Inter", "DejaVu Sans", "DejaVu Serif"];
        const others = ["Cantarell", "Noto Sans", "Ubuntu", "Lato", "Liberation Sans", "Open Sans"];
        return always.concat(others.filter(family => machine.hasFont(family))).map(family => ({
                    tag: family,
                    family: family
                }));
    }

    // The tables are made before a test has its machine.
    function withMachine(make) {
        machine = machineComponent.createObject(test);
        const result = make();
        machine.destroy();
        return result;
    }

    function use(family) {
        verify(machine.hasFont(family), family);
        machine.useFont(family);
    }

    function cleanup() {
        machine.useFont("");
        test.endCase();
    }

    function isText(item) {
        return item instanceof Text || item instanceof TabularText;
    }

    function edges(item, frame) {
        const [left, top, width, height] = box(item, frame);
        return [left, top, left + width, top + height];
    }

    function isWithin(item, frame, left, top, right, bottom) {
        const [l, t, r, b] = edges(item, frame);
        return l >= left - 0.01 && t >= top - 0.01 && r <= frame.width - right + 0.01 && b <= frame.height - bottom + 0.01;
    }

    // Every text has the room that it asks for, within all that clips it.
    function checkTexts(root) {
        const texts = items(root, item => isText(item) && item.visible && item.text !== "");
        verify(texts.length > 0);
        check(texts.map(item => ["font of " + item.text, item.font.family === machine.family() || item.font.family === "monospace", true]));
        check(texts.map(item => [item.text + " truncated", item.truncated, false]));
        check(texts.map(item => ["room of " + item.text, [item.width >= item.implicitWidth - 0.01, item.height >= item.implicitHeight - 0.01], [true, true]]));
        for (const item of texts)
            for (let frame = item.parent; frame && frame !== root.parent; frame = frame.parent)
                if (frame.clip || frame === root)
                    verify(isWithin(item, frame, 0, 0, 0, 0), item.text + " in " + frame);
    }

    function lineOf(item) {
        return item.mapToItem(view, 0, item.baselineOffset).y;
    }

    function middle(item, frame) {
        const [, top, , bottom] = edges(item, frame);
        return (top + bottom) / 2;
    }

    function test_cards_data() {
        return withMachine(rows);
    }

    function test_cards(data) {
        use(data.family);
        show([shop, api]);
        findChild(view, "cards").toggleExpand("3000");
        const details = find(0, "details");
        tryVerify(() => details.opacity === 1 && !card(0).isOpening && details.height === details.children[0].height);
        checkTexts(view);
        const header = findChild(view, "header");
        const footer = findChild(view, "footer");
        const open = find(0, "open");
        const quit = findChild(view, "quit");
        const lines = [["lead", "port", "framework"], ["memory", "cpu", "uptime"], ["PID", "PID caption", "MEM", "MEM caption", "Script", "Script caption"]];
        for (const line of lines)
            check(line.map(name => ["baseline of " + name, lineOf(find(0, name)), lineOf(find(0, line[0]))]));
        const tops = lines[2].map(name => find(0, name).y);
        verify(Math.min(...tops) >= 0 && Math.min(...tops) < 1, "the highest text is at the top");
        // A column takes up its rows' heights with the next frame.
        for (const row of [0, 1])
            tryVerify(() => card(row).height === Math.round(card(row).height), 3000, "whole height of card " + row);
        check([
            ["name above address", edges(find(0, "title"), view)[3] <= edges(find(0, "lead"), view)[1], true],
            ["details in the card", isWithin(find(0, "Script"), card(0), 16, 16, 16, 16), true],
            ["directory in the card", isWithin(find(0, "directory"), card(0), 16, 16, 16, 15.9), true],
            ["slogan before refresh", edges(text(view, "Let me kill your LocalHost"), view)[2] < edges(findChild(view, "refresh"), view)[0], true],
            ["title in the header", isWithin(text(view, "Tidewick"), header, 0, 4, 0, 4), true],
            ["counts in the footer", isWithin(findChild(view, "running"), footer, 0, 4, 0, 4), true],
            ["counts on one line", lineOf(findChild(view, "live")), lineOf(findChild(view, "running"))],
            ["quit in the footer", isWithin(quit, footer, 0, 2, 0, 2), true],
            ["open's text in its padding", isWithin(text(open, "Open"), open, 14, 7.5, 13.9, 7.5), true],
            ["open's text in the middle", Math.abs(middle(text(open, "Open"), open) - open.height / 2) <= 0.5, true],
            ["open's arrow in the middle", Math.abs(middle(symbol(open, "arrow.up.forward"), open) - open.height / 2) <= 0.5, true],
            ["chevron beside it", Math.abs(middle(find(0, "expand"), view) - middle(open, view)) <= 0.5, true],
            ["quit's text in its padding", isWithin(text(quit, "Quit"), quit, 9.9, 3.9, 9.9, 3.9), true]
        ]);
    }

    // Whatever other fonts are installed.
    function test_desktopsFontIsTheOneOfThePictures() {
        view = viewOf();
        compare(machine.drawnFamily(), "Inter");
    }

    // A weight that a font lacks is drawn as the regular one.
    function test_monospacedTextIsMedium() {
        show([shop]);
        findChild(view, "cards").toggleExpand("3000");
        settle();
        for (const name of ["PID", "MEM"]) {
            const value = find(0, name);
            const medium = machine.weightOf(value, 0);
            value.font.weight = Font.Normal;
            const regular = machine.weightOf(value, 0);
            verify(medium > 1.05 * regular, name + " has " + medium + ", and regular " + regular);
        }
    }

    function test_question_data() {
        return withMachine(rows);
    }

    function test_question(data) {
        use(data.family);
        show([shop]);
        const before = box(find(0, "title"), view);
        ask(0);
        tryCompare(find(0, "confirmation"), "scale", 1);
        settle();
        checkTexts(view);
        const confirm = find(0, "confirm");
        check([
            ["in its padding", isWithin(text(confirm, "Kill port"), confirm, 7.9, 3.9, 7.9, 3.9), true],
            ["capsule in the card", isWithin(find(0, "confirmation"), card(0), 0, 8, 16, 8), true],
            ["title's place", box(find(0, "title"), view).slice(0, 2), before.slice(0, 2)]
        ]);
    }

    function test_emptyAndScanning_data() {
        return withMachine(rows);
    }

    function test_emptyAndScanning(data) {
        use(data.family);
        machine.setSlow(true);
        view = viewOf();
        tryVerify(() => findChild(view, "loading").visible);
        checkTexts(view);
        machine.setSlow(false);
        tryVerify(() => findChild(view, "empty").visible);
        checkTexts(view);
    }

    Component {
        id: settings

        SettingsView {}
    }

    function test_settings_data() {
        return withMachine(rows);
    }

    function test_settings(data) {
        use(data.family);
        view = viewOf();
        const window = createTemporaryObject(settings, test, {
            settings: machine.settings
        });
        checkTexts(window);
        const toggle = findChild(window, "toggle");
        const version = findChild(window, "version");
        check([
            ["label beside its box", Math.abs(middle(toggle.contentItem, toggle) - middle(toggle.indicator, toggle)) <= 0.5, true],
            ["label above version", edges(toggle, window)[3] <= edges(version, window)[1], true],
            ["version in the padding", isWithin(version, window, 20, 20, 20, 19.9), true]
        ]);
    }
}
