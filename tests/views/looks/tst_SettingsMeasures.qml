import QtQuick
import QtTest
import Tidewick
import TidewickTest

// Every number, colour, size, weight and text of the settings, read from their live items.
ItemCase {
    id: test

    name: "SettingsMeasures"
    width: 320
    height: 150
    visible: true
    when: windowShown

    Machine {
        id: machine
    }

    SystemPalette {
        id: system
    }

    Component {
        id: settings

        SettingsView {
            settings: machine.settings
        }
    }

    function make(launchAtLogin) {
        return createTemporaryObject(settings, test, {
            launchAtLogin: launchAtLogin
        });
    }

    function test_layout() {
        const view = make(false);
        const headline = findChild(view, "headline");
        const toggle = findChild(view, "toggle");
        const version = findChild(view, "version");
        const [left, top, width, height] = box(version, view);
        check([
            ["frame", [view.implicitWidth, view.implicitHeight, view.width, view.height], [320, 150, 320, 150]],
            ["ground", view.color, system.window],
            ["headline", [headline.text].concat(font(headline)), ["General", 13, Font.Bold, system.windowText]],
            ["headline's place", box(headline, view).slice(0, 2), [20, 20]],
            ["toggle", [toggle.text].concat(font(toggle.contentItem)), ["Launch at Login", 13, Font.Normal, system.windowText]],
            ["toggle's left edge", box(toggle, view)[0], 20],
            ["from headline to toggle", box(toggle, view)[1] - 20 - headline.height, 20],
            ["between all items", headline.parent.spacing, 20],
            ["version", [version.text].concat(font(version)), ["Tidewick v1.0", 10, Font.Normal, system.windowText]],
            ["version's faintness", version.opacity, 0.55],
            ["version's middle", Math.abs(left + width / 2 - 160) <= 0.5, true],
            ["version's lower edge", top + height, 130]
        ]);
    }

    // The parts that must be told apart, and how far at least, as contrasts.
    function test_isReadableInEveryScheme_data() {
        return [{ tag: "dark", isDark: true }, { tag: "light", isDark: false }];
    }

    function test_isReadableInEveryScheme(data) {
        const view = make(false);
        machine.useScheme(data.isDark);
        const toggle = findChild(view, "toggle");
        const version = findChild(view, "version");
        const faded = Qt.tint(view.color, at(version.color, version.opacity));
        compare(luminance(view.color) < 0.2, data.isDark);
        compare(machine.pixelOf(view, 5, 5), view.color);
        for (const [name, one, other, least] of [["headline", findChild(view, "headline").color, view.color, 7], ["label", toggle.contentItem.color, view.color, 7], ["version", faded, view.color, 4.5], ["box", toggle.indicator.borderColor, view.color, 3]])
            verify(contrast(one, other) >= least, name + ": " + contrast(one, other));
        view.launchAtLogin = true;
        verify(contrast(toggle.indicator.color, view.color) >= 3, "box that is on");
        verify(contrast(symbol(toggle, "checkmark").color, toggle.indicator.color) >= 3, "mark");
    }

    function test_markHasTheColourOfMarkedText() {
        const mark = symbol(findChild(make(true), "toggle"), "checkmark");
        machine.useMarkedText("#123456");
        compare(mark.color, Qt.color("#123456"));
    }

    function luminance(color) {
        const part = value => value <= 0.04045 ? value / 12.92 : Math.pow((value + 0.055) / 1.055, 2.4);
        return 0.2126 * part(color.r) + 0.7152 * part(color.g) + 0.0722 * part(color.b);
    }

    function contrast(one, other) {
        const [a, b] = [luminance(one), luminance(other)];
        return (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
    }

    function cleanup() {
        machine.useDesktopsScheme();
    }

    function focusByTab(control) {
        control.forceActiveFocus();
        control.focusReason = Qt.TabFocusReason;
        tryVerify(() => control.visualFocus, 3000, "focus");
    }

    function test_box_data() {
        return [
            { tag: "off", isOn: false, fill: system.base, border: Qt.tint(system.base, at(system.windowText, 0.5)), mark: false },
            { tag: "on", isOn: true, fill: system.highlight, border: system.highlight, mark: true },
            { tag: "off, focused", isOn: false, isFocused: true, fill: system.base, border: system.windowText, mark: false },
            { tag: "on, focused", isOn: true, isFocused: true, fill: system.highlight, border: system.windowText, mark: true }
        ];
    }

    function test_box(data) {
        const toggle = findChild(make(data.isOn), "toggle");
        const mark = symbol(toggle, "checkmark");
        const frame = toggle.indicator;
        if (data.isFocused)
            focusByTab(toggle);
        check([
            ["box", [frame.width, frame.height, frame.radius, frame.borderWidth], [14, 14, 3, data.isFocused ? 2 : 1]],
            ["box's fill and border", [frame.color, frame.borderColor], [data.fill, data.border]],
            ["box's place", box(frame, toggle).slice(0, 2), [0, (toggle.height - 14) / 2]],
            ["label's left edge", box(text(toggle, "Launch at Login"), toggle)[0], 22],
            ["mark", [mark.visible].concat(ink(mark)), [data.mark, 10, Font.DemiBold, system.highlightedText]]
        ]);
    }
}
