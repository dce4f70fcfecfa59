import QtQuick
import QtTest
import Tidewick
import TidewickTest

// A panel over a made-up machine, which looks the same in every run.
ItemCase {
    id: test

    width: 480
    height: 540
    visible: true
    when: windowShown

    property Machine machine
    property ContentView view

    readonly property var shop: ({
            port: 3000,
            pid: "812",
            command: "node node_modules/.bin/vite server.js",
            figures: "614400 45.0",
            elapsed: "02:05:00",
            directory: "/srv/shop",
            live: true
        })
    readonly property var api: ({
            port: 7000,
            pid: "99",
            command: "node index.js",
            figures: "45056 2.0",
            elapsed: "03:10",
            directory: "/srv/api"
        })

    property Component machineComponent: Component {
        Machine {}
    }

    Component {
        id: viewComponent

        ContentView {
            width: 480
            height: 540
        }
    }

    function init() {
        machine = machineComponent.createObject(test);
        machine.setKill(0, 0);
        machine.reduceMotion(true);
    }

    function cleanup() {
        endCase();
    }

    function endCase() {
        machine.setSlow(false);
        view.destroy();
        machine.destroy();
        wait(0);
    }

    // A panel with the pointer on nothing.
    function viewOf() {
        mouseMove(test, 240, 20);
        return viewComponent.createObject(test, {
            panel: machine.panel
        });
    }

    function show(listeners) {
        machine.listen(listeners);
        view = viewOf();
        tryCompare(machine.panel, "runningCount", listeners.length);
        tryCompare(machine.panel, "isLoading", false);
        if (listeners.length > 0)
            tryVerify(() => card(Math.min(listeners.length, 4) - 1) !== null);
    }

    function find(row, name) {
        return findChild(card(row), name);
    }

    function card(row) {
        return findChild(view, "cards").itemAtIndex(row);
    }

    // The question is not withdrawn, however long the rest of the test takes.
    function ask(row) {
        card(row).ask();
        find(row, "withdrawal").stop();
    }

    // Until two pictures are alike.
    function settle() {
        tryVerify(() => {
            machine.rememberPicture(view);
            wait(150);
            return !machine.hasChanged(view);
        }, 10000);
    }
}
