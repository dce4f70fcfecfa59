import QtQuick
import QtTest
import Tidewick
import TidewickTest

TestCase {
    id: test

    name: "SettingsView"
    width: 320
    height: 150
    visible: true
    when: windowShown

    Machine {
        id: machine
    }

    Component {
        id: settings

        SettingsView {
            settings: machine.settings
        }
    }

    function init() {
        machine.clearLog();
    }

    function make(launchAtLogin) {
        return createTemporaryObject(settings, test, { launchAtLogin: launchAtLogin });
    }

    function test_showsTheInitialValueAndAsksForNothing_data() {
        return [{ tag: "on", value: true }, { tag: "off", value: false }];
    }

    function test_showsTheInitialValueAndAsksForNothing(data) {
        compare(findChild(make(data.value), "toggle").checked, data.value);
        compare(machine.log, []);
    }

    function test_turningItOnRegistersOnceAndOffUnregistersOnce() {
        const toggle = findChild(make(false), "toggle");
        mouseClick(toggle);
        compare(machine.log, ["register"]);
        mouseClick(toggle);
        compare(machine.log, ["register", "unregister"]);
    }

    function test_keyboardToggles_data() {
        return [{ tag: "space", key: Qt.Key_Space }, { tag: "return", key: Qt.Key_Return },
                { tag: "enter", key: Qt.Key_Enter }];
    }

    function test_keyboardToggles(data) {
        const toggle = findChild(make(false), "toggle");
        toggle.forceActiveFocus();
        keyClick(data.key);
        verify(toggle.checked);
        compare(machine.log, ["register"]);
    }

    function test_keysGoToTheToggle() {
        verify(findChild(make(false), "toggle").activeFocus);
    }

    function test_toggleTellsWhetherItIsOn_data() {
        return [{ tag: "on", value: true }, { tag: "off", value: false }];
    }

    function test_toggleTellsWhetherItIsOn(data) {
        const toggle = findChild(make(data.value), "toggle");
        const told = toggle.Accessible;
        compare([told.role, told.name, told.checkable, told.checked], [Accessible.CheckBox, "Launch at Login", true, data.value]);
        verify(toggle.contentItem.Accessible.ignored);
    }

    function test_accessibilityBusToggles_data() {
        return [{ tag: "press", act: toggle => toggle.Accessible.pressAction() },
                { tag: "toggle", act: toggle => toggle.Accessible.toggleAction() }];
    }

    function test_accessibilityBusToggles(data) {
        const toggle = findChild(make(false), "toggle");
        data.act(toggle);
        verify(toggle.checked);
        compare(machine.log, ["register"]);
    }

    function test_keyHeldDownTogglesOnce_data() {
        return [{ tag: "return", key: Qt.Key_Return }, { tag: "enter", key: Qt.Key_Enter }];
    }

    function test_keyHeldDownTogglesOnce(data) {
        const toggle = findChild(make(false), "toggle");
        toggle.forceActiveFocus();
        keyPress(data.key);
        machine.repeatKey(toggle, data.key);
        machine.repeatKey(toggle, data.key);
        keyRelease(data.key);
        compare(machine.log, ["register"]);
    }

    function test_failureLeavesTheToggleOn() {
        machine.failRegistration("Read-only file system");
        const view = make(false);
        mouseClick(findChild(view, "toggle"));
        verify(findChild(view, "toggle").checked);
        verify(view.launchAtLogin);
        machine.failRegistration("");
    }
}
