import QtQuick
import QtTest
import Tidewick
import TidewickTest

TestCase {
    id: test

    name: "ContentView"
    width: 480
    height: 540
    visible: true
    when: windowShown

    property Machine machine
    property ContentView view
    // How often Escape reached what is around the panel.
    property int escapes: 0

    Keys.onEscapePressed: ++escapes

    readonly property var shop: ({
            port: 3000,
            pid: "812",
            command: "node node_modules/.bin/vite server.js",
            figures: "614400 45.0",
            elapsed: "02:05:00",
            directory: "/srv/<b>shop",
            live: true
        })
    readonly property var api: ({
            port: 7000,
            pid: "99",
            command: "node x",
            figures: "0 0.1",
            elapsed: "",
            directory: ""
        })

    readonly property var pressKeys: [
        {
            tag: "Space",
            key: Qt.Key_Space
        },
        {
            tag: "Return",
            key: Qt.Key_Return
        },
        {
            tag: "Enter",
            key: Qt.Key_Enter
        }
    ]

    Component {
        id: machineComponent

        Machine {}
    }

    Component {
        id: timerComponent

        Timer {}
    }

    Component {
        id: labelComponent

        KillLabel {}
    }

    Component {
        id: arrowComponent

        RefreshArrow {}
    }

    Component {
        id: tipComponent

        HelpTip {}
    }

    Component {
        id: windowComponent

        Window {
            visible: true
        }
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
    }

    function cleanup() {
        machine.setSlow(false);
        view.destroy();
        machine.destroy();
        test.Window.window.visible = true;
        wait(0);
    }

    function show(listeners) {
        machine.listen(listeners);
        view = viewComponent.createObject(test, {
            panel: machine.panel
        });
        tryCompare(machine.panel, "runningCount", listeners.length);
        tryCompare(machine.panel, "isLoading", false);
        if (listeners.length > 0)
            tryVerify(() => card(Math.min(listeners.length, 5) - 1) !== null);
    }

    function card(row) {
        return findChild(view, "cards").itemAtIndex(row);
    }

    function press(row, name) {
        const button = findChild(card(row), name);
        tryVerify(() => button.visible, 5000, name);
        if (name === "cancel" || name === "confirm")
            tryCompare(findChild(card(row), "confirmation"), "scale", 1);
        mouseClick(button);
        if (name === "stop")
            keepQuestion(row);
    }

    // A question that is not withdrawn, however long the rest of the test takes.
    function keepQuestion(row) {
        verify(card(row).showKillConfirmation);
        findChild(card(row), "withdrawal").stop();
    }

    // Until the next press is one of its own.
    function outlastClickSequence() {
        wait(Application.styleHints.mouseDoubleClickInterval + 1);
    }

    // More cards than the panel shows at a time.
    function manyCards() {
        return [0, 1, 2, 3, 4, 5, 6, 7].map(row => Object.assign({}, shop, { port: 3000 + row, pid: String(row + 1) }));
    }

    function test_scanningShowsOnlyWithNothingToShow() {
        machine.setSlow(true);
        view = viewComponent.createObject(test, {
            panel: machine.panel
        });
        tryVerify(() => findChild(view, "loading").visible);
        verify(!findChild(view, "empty").visible);
        verify(!findChild(view, "refresh").enabled);
        machine.setSlow(false);
        tryVerify(() => findChild(view, "empty").visible);
        verify(!findChild(view, "loading").visible);
        verify(findChild(view, "refresh").enabled);
    }

    function test_loadingKeepsTheCards() {
        show([api]);
        machine.setSlow(true);
        mouseClick(findChild(view, "refresh"));
        tryCompare(machine.panel, "isLoading", true);
        verify(findChild(view, "cards").visible);
        verify(!findChild(view, "loading").visible);
    }

    function test_arrowTurnsWhileLoadingAndComesToRest() {
        show([api]);
        const arrow = findChild(view, "refresh").contentItem;
        tryCompare(arrow, "angle", 0);
        machine.setSlow(true);
        mouseClick(findChild(view, "refresh"));
        tryVerify(() => arrow.angle > 0);
        compare(arrow.rotation, 0, "drawn turned, not turned as a picture");
        machine.setSlow(false);
        tryCompare(arrow, "angle", 0);
        compare(arrow.rotation, 0);
    }

    function test_arrowTurnsInWholeTurnsAndOnlyInView() {
        show([]);
        const arrow = arrowComponent.createObject(view, { isTurning: true });
        const resting = findChild(arrow, "resting");
        tryVerify(() => arrow.turn > 120);
        arrow.isTurning = false;
        verify(resting.running);
        arrow.isTurning = true;
        verify(!resting.running);
        tryVerify(() => arrow.turn < 120, 5000, "begins upright");
        tryVerify(() => arrow.turn > 0);
        test.Window.window.visible = false;
        compare(arrow.turn, 0);
    }

    function test_arrowIsDrawnInSteps() {
        show([]);
        const arrow = arrowComponent.createObject(view, { isTurning: false });
        const angles = [7, 8, 52, 352, 360].map(turn => {
            arrow.turn = turn;
            return arrow.angle;
        });
        compare(angles, [0, 15, 45, 345, 360]);
    }

    function test_refreshKeepsItsOwnFocus_data() {
        return [{ tag: "keyboard", reason: Qt.TabFocusReason, isVisible: true }, { tag: "pointer", reason: Qt.MouseFocusReason, isVisible: false }];
    }

    function test_refreshKeepsItsOwnFocus(row) {
        show([shop]);
        const button = findChild(view, "refresh");
        button.forceActiveFocus(row.reason);
        for (let refreshes = 0; refreshes < 2; ++refreshes) {
            refreshOnce();
            compare([button.activeFocus, button.visualFocus], [true, row.isVisible]);
        }
    }

    // A refresh from the first of its moments to the last.
    function refreshOnce() {
        machine.setSlow(true);
        machine.panel.refresh();
        tryCompare(findChild(view, "refresh"), "enabled", false);
        machine.setSlow(false);
        tryCompare(findChild(view, "refresh"), "enabled", true);
    }

    function test_refreshTakesNobodysFocus() {
        show([shop]);
        const focused = () => test.Window.activeFocusItem;
        refreshOnce();
        verify(focused() === view);
        findChild(view, "refresh").forceActiveFocus(Qt.TabFocusReason);
        card(0).forceActiveFocus(Qt.TabFocusReason);
        refreshOnce();
        verify(focused() === card(0));
        card(0).focus = false;
        refreshOnce();
        verify(!findChild(view, "refresh").activeFocus);
    }

    function test_counts() {
        show([shop, api]);
        compare(findChild(view, "running").text, "2 running");
        compare(findChild(view, "live").text, "1 live");
        verify(findChild(view, "live").visible);
    }

    function test_noLiveCountWhereNothingAnswers() {
        show([api]);
        verify(!findChild(view, "live").visible);
        verify(!findChild(view, "clock").isRunning, "nothing pulses");
    }

    function test_quit() {
        show([]);
        mouseClick(findChild(view, "quit"));
        compare(machine.log, ["quit"]);
    }

    function test_quitByEachKey_data() {
        return pressKeys;
    }

    function test_quitByEachKey(row) {
        show([]);
        const quit = findChild(view, "quit");
        compare(quit.contentItem.text, "Quit");
        compare(quit.Accessible.name, "Quit");
        quit.forceActiveFocus(Qt.TabFocusReason);
        keyClick(row.key);
        compare(machine.log, ["quit"]);
    }

    function test_quitTellsNothingMoreUnderThePointer() {
        show([]);
        const quit = findChild(view, "quit");
        mouseMove(quit, quit.width / 2, quit.height / 2);
        verify(quit.hovered);
        verify(!findChild(quit, "tip").active);
    }

    function test_quitIsFainterInAnInactiveWindow() {
        show([]);
        const ground = findChild(view, "quit").background;
        test.Window.window.requestActivate();
        tryCompare(test.Window.window, "active", true);
        const opacity = ground.color.a;
        const other = createTemporaryObject(windowComponent, test, { transientParent: null });
        other.requestActivate();
        tryCompare(other, "active", true);
        verify(ground.color.a < opacity);
    }

    function test_headerAndFooterTell() {
        show([shop, api]);
        compare(shown(findChild(view, "header")), ["Tidewick", "—", "Let me kill your LocalHost", "arrow.clockwise"]);
        compare(shown(findChild(view, "footer")), ["1 live", "2 running", "Quit"]);
    }

    function test_cardOfAListenerThatAnswers() {
        show([shop]);
        const texts = {
            title: "<b>shop",
            port: "3000",
            framework: "Vite",
            memory: "600 MB",
            cpu: "45% CPU",
            uptime: "2h 5m"
        };
        for (const name in texts)
            compare(findChild(card(0), name).text, texts[name], name);
        compare(findChild(card(0), "title").textFormat, Text.PlainText);
        verify(findChild(card(0), "open").visible);
    }

    function test_cardOfAListenerThatDoesNot() {
        show([api]);
        for (const name of ["framework", "memory", "cpu", "uptime"])
            verify(!findChild(card(0), name).visible, name);
        verify(!findChild(card(0), "open").visible);
        compare(findChild(card(0), "title").text, "Node App");
    }

    // Where `item` stands in the panel: left, top, width and height.
    function box(item) {
        const place = item.mapToItem(view, 0, 0);
        return [place.x, place.y, item.width, item.height];
    }

    // The texts and the names of the symbols that `item` shows, in the order of their declaration.
    function shown(item) {
        if (!item.visible || item.opacity === 0 || item.width === 0)
            return [];
        const own = item instanceof Text || item instanceof TabularText ? [item.text] : item instanceof Symbol ? [item.name] : [];
        return own.concat(...Array.from(item.children, shown));
    }

    function test_cardsShowWhatTheyTell() {
        show([shop, api]);
        compare(shown(card(0)), ["dot.radiowaves.up.forward", "<b>shop", "Live on port", "3000", "•", "Vite", "600 MB", "45% CPU", "2h 5m", "arrow.up.forward", "Open", "chevron.down", "xmark"]);
        compare(shown(card(1)), ["circle.fill", "Node App", "Port", "7000", "chevron.down", "xmark"]);
    }

    function test_cardsStandInThePanelToThePoint() {
        show([shop, api]);
        for (const row of [0, 1])
            tryCompare(findChild(card(row), "stop"), "visible", true);
        const heights = [0, 1].map(row => card(row).height);
        verify(heights[0] > 74, heights[0]);
        compare(heights[1], 74, "no higher than its badge asks");
        const tops = [45 + 12, 45 + 12 + heights[0] + 10];
        for (const row of [0, 1]) {
            const find = name => findChild(card(row), name);
            const top = tops[row];
            compare(box(find("surface")), [12, top, 456, heights[row]]);
            compare(box(find("badge")), [28, top + 16, 42, 42]);
            compare(box(find("title")).slice(0, 2), [84, top + 16]);
            const stop = box(find("stop"));
            compare([stop[0], stop[2], stop[3]], [436, 16, 16]);
            const expand = box(find("expand"));
            compare([expand[0], expand[2], expand[3]], [408, 24, 24]);
        }
        const open = box(findChild(card(0), "open"));
        compare([open[0] + open[2], open[1]], [404, tops[0] + 16]);
        verify(open[2] > 40 && open[3] > 20, open);
    }

    function test_cardsHaveAFrame() {
        show([shop, api]);
        const middle = box(findChild(card(1), "surface"))[1] + Math.round(card(1).height / 2);
        const image = grabImage(view);
        for (const [frame, outside, inside] of [[12, 11, 13], [467, 468, 466]]) {
            verify(image.red(frame, middle) > image.red(outside, middle), "against what is outside");
            verify(image.red(frame, middle) > image.red(inside, middle), "against what is inside");
        }
    }

    function test_detailsFadeInAsTheyUnroll() {
        show([shop]);
        const details = findChild(card(0), "details");
        card(0).toggleExpand();
        let difference = 0;
        for (let steps = 0; steps < 1000 && details.opacity < 1; ++steps) {
            const unrolled = Math.min(1, details.height / details.children[0].height);
            difference = Math.max(difference, Math.abs(details.opacity - unrolled));
            wait(5);
        }
        compare(details.opacity, 1);
        verify(difference < 0.1, difference);
    }

    function test_openAndReveal() {
        show([shop]);
        press(0, "open");
        press(0, "expand");
        const details = findChild(card(0), "details");
        tryVerify(() => details.opacity === 1 && details.height === details.children[0].height);
        press(0, "reveal");
        compare(machine.log, ["open http://localhost:3000", "reveal /srv/<b>shop"]);
    }

    function test_oneCardAtMostIsExpanded() {
        show([shop, api]);
        press(0, "expand");
        verify(card(0).isExpanded);
        press(1, "expand");
        verify(card(1).isExpanded && !card(0).isExpanded);
        press(1, "expand");
        verify(!card(1).isExpanded);
    }

    function test_tapOnTheCardExpandsIt() {
        show([shop]);
        mouseClick(card(0), 150, 30);
        verify(card(0).isExpanded);
    }

    function test_keyOnTheCardExpandsIt_data() {
        return pressKeys;
    }

    function test_keyOnTheCardExpandsIt(row) {
        show([shop]);
        view.forceActiveFocus();
        keyClick(Qt.Key_Down);
        tryVerify(() => card(0).activeFocus);
        keyClick(row.key);
        verify(card(0).isExpanded);
        compare(findChild(card(0), "expand").Accessible.name, "Hide details");
        machine.repeatKey(card(0), row.key);
        verify(card(0).isExpanded, "a key that stays down presses once");
        keyClick(row.key);
        verify(!card(0).isExpanded);
        compare(findChild(card(0), "expand").Accessible.name, "Show details");
    }

    function test_downGoesFromThePanelToItsFirstCard() {
        show([shop, api]);
        view.forceActiveFocus();
        keyClick(Qt.Key_Down);
        tryVerify(() => card(0).activeFocus);
    }

    function test_singlePressKillsNothingAndIsWithdrawnAfterThreeSeconds() {
        show([shop]);
        const order = [];
        card(0).showKillConfirmationChanged.connect(() => order.push(card(0).showKillConfirmation ? "asked" : "withdrawn"));
        const early = noting(order, "early", 2900);
        const late = noting(order, "late", 3300);
        early.start();
        mouseClick(findChild(card(0), "stop"));
        late.start();
        tryVerify(() => findChild(card(0), "confirmation").opacity === 1);
        tryVerify(() => !findChild(card(0), "open").visible);
        tryVerify(() => order.length === 4, 60000);
        compare(order, ["asked", "early", "withdrawn", "late"]);
        tryVerify(() => !findChild(card(0), "confirmation").visible);
        tryVerify(() => findChild(card(0), "open").opacity === 1);
        compare(machine.log, []);
    }

    // A busy machine delays all timers, but they end in the order in which they are due.
    function noting(order, name, milliseconds) {
        const timer = createTemporaryObject(timerComponent, test, {
            interval: milliseconds
        });
        timer.triggered.connect(() => order.push(name));
        return timer;
    }

    function test_refreshKeepsConfirmationAndExpansion() {
        show([shop]);
        const before = card(0);
        press(0, "expand");
        press(0, "stop");
        machine.listen([shop, api]);
        machine.panel.refresh();
        tryCompare(machine.panel, "runningCount", 2);
        verify(card(0) === before);
        verify(card(0).isExpanded && card(0).showKillConfirmation);
    }

    function test_cancelWithdraws() {
        show([shop]);
        press(0, "stop");
        press(0, "cancel");
        verify(!card(0).showKillConfirmation);
        tryVerify(() => !findChild(card(0), "confirmation").visible);
        compare(machine.log, []);
    }

    function test_escapeWithdraws() {
        show([shop]);
        escapes = 0;
        press(0, "stop");
        keyClick(Qt.Key_Escape);
        verify(!card(0).showKillConfirmation);
        compare(escapes, 0, "the panel stays");
        keyClick(Qt.Key_Escape);
        compare(escapes, 1, "the panel may close");
    }

    function test_confirmedKillEndsTheProcess() {
        show([shop, api]);
        machine.setKill(0, 50);
        press(0, "stop");
        press(0, "confirm");
        tryCompare(machine, "log", ["kill 812"]);
        compare(machine.panel.runningCount, 1);
        tryCompare(machine.panel, "killingPid", "");
    }

    // A busy machine may be late, but not each time.
    function test_cardOfAKilledProcessShowsProgressAMomentLonger() {
        show([shop]);
        let ended = 0;
        const times = [];
        machine.logChanged.connect(() => ended = Date.now());
        machine.panel.killingPidChanged.connect(() => {
            if (machine.panel.killingPid === "")
                times.push(Date.now() - ended);
        });
        for (let kill = 0; kill < 10 && !(times[kill - 1] < 350); ++kill) {
            const pid = String(812 + kill);
            machine.panel.kill(pid);
            tryVerify(() => machine.log[machine.log.length - 1] === "kill " + pid);
            tryCompare(machine.panel, "killingPid", "");
        }
        verify(Math.min(...times) > 150 && Math.min(...times) < 350, "after " + times + " ms");
    }

    function test_failedKillBringsTheCardBack() {
        show([shop]);
        machine.setKill(1, 60000);
        press(0, "stop");
        press(0, "confirm");
        compare(machine.panel.killingPid, "812");
        machine.setKill(1, 0);
        tryCompare(machine, "log", ["kill 812"]);
        tryCompare(machine.panel, "killingPid", "");
        tryCompare(machine.panel, "runningCount", 1);
    }

    // It would be there 200 ms later anyway. This process may be held up, but not always.
    function test_failedKillBringsTheCardBackAtOnce() {
        show([shop]);
        machine.setKill(1, 0);
        let ended = 0;
        const times = [];
        machine.logChanged.connect(() => ended = Date.now());
        machine.panel.killingPidChanged.connect(() => {
            if (machine.panel.killingPid === "")
                times.push(Date.now() - ended);
        });
        for (let kill = 0; kill < 10 && !(times[kill - 1] < 100); ++kill) {
            machine.panel.kill(String(812 + kill));
            tryVerify(() => times.length > kill);
        }
        verify(Math.min(...times) < 100, "after " + times + " ms");
        const count = times.length;
        wait(300);
        compare(times.length, count, "and once");
    }

    function test_labelOfABusyKillIsASpinner() {
        show([]);
        const label = labelComponent.createObject(view, {
            isBusy: true
        });
        const spinner = findChild(label, "killing");
        const turning = findChild(spinner, "turning");
        compare(label.implicitWidth, 60);
        verify(spinner.visible && turning.running);
        compare([spinner.Accessible.role, spinner.Accessible.name], [Accessible.Animation, "In progress"]);
        tryVerify(() => spinner.angle > 120);
        label.isBusy = false;
        verify(!spinner.visible && !turning.running);
        label.isBusy = true;
        tryVerify(() => spinner.angle < 120, 5000, "each turn is a whole one");
    }

    function test_everyControlHasARoleAndAName() {
        show([shop]);
        const names = {
            open: "View in browser",
            expand: "Show details",
            stop: "Stop service",
            cancel: "Cancel",
            confirm: "Kill port"
        };
        for (const name in names) {
            compare(findChild(card(0), name).Accessible.name, names[name]);
            compare(findChild(card(0), name).Accessible.role, Accessible.Button);
        }
        compare(findChild(view, "refresh").Accessible.name, "Refresh");
        compare(card(0).Accessible.name, "<b>shop, live on port 3000, Vite, 600 MB, 45% CPU, 2h 5m");
        compare(card(0).Accessible.role, Accessible.ListItem);
        verify(card(0).Accessible.focusable);
        const list = findChild(view, "cards");
        compare(list.Accessible.role, Accessible.List);
        compare(list.Accessible.name, "Listeners");
        const title = findChild(card(0), "title");
        compare(title.Accessible.role, Accessible.StaticText);
        compare(title.Accessible.name, "<b>shop");
        const running = findChild(view, "running");
        compare(running.Accessible.role, Accessible.StaticText);
        compare(running.Accessible.name, "1 running");
    }

    function test_listIsThereOnlyWithListeners() {
        show([]);
        verify(!findChild(view, "cards").visible);
        machine.listen([shop]);
        machine.panel.refresh();
        tryVerify(() => findChild(view, "cards").visible);
    }

    function test_tabGoesThroughTheCurrentCard() {
        show([shop, api]);
        const focused = () => test.Window.activeFocusItem;
        const seen = [];
        findChild(view, "refresh").forceActiveFocus(Qt.TabFocusReason);
        while (focused().objectName !== "quit" && seen.length < 10) {
            keyClick(Qt.Key_Tab);
            wait(20);
            seen.push(focused() === card(0) ? "card" : focused().objectName);
        }
        compare(seen, ["card", "open", "expand", "stop", "quit"]);
    }

    function test_openStaysAtTheRightEdgeWhileItGoes() {
        show([shop]);
        const open = findChild(card(0), "open");
        card(0).ask();
        keepQuestion(0);
        tryCompare(open.parent, "width", 0);
        compare(open.x + open.width, 0, "all of it is to the left");
    }

    function test_openTakesNoPressWhileItGoes() {
        show([shop]);
        card(0).ask();
        keepQuestion(0);
        const open = findChild(card(0), "open");
        verify(open.visible);
        mouseClick(open);
        compare(machine.log, []);
    }

    function test_badgeOutOfViewDoesNotPulse() {
        show(manyCards());
        const badge = findChild(card(0), "badge");
        tryVerify(() => badge.isPulsing);
        findChild(view, "cards").contentY = 63;
        verify(badge.isPulsing);
        findChild(view, "cards").contentY = 64;
        verify(card(0) !== null);
        verify(!badge.isPulsing);

        const list = findChild(view, "cards");
        list.contentY = list.originY - list.topMargin;
        const row = Array.from(Array(8).keys()).find(row => card(row).y + card(row).height > list.contentY + list.height);
        list.contentY = card(row).y + 10.5 - list.height;
        verify(findChild(card(row), "badge").isPulsing);
        list.contentY = card(row).y + 10 - list.height;
        verify(!findChild(card(row), "badge").isPulsing);
    }

    // It darkens what is right below the card.
    function test_cardHasAShadow() {
        show([shop]);
        const [left, top, width, height] = box(findChild(card(0), "surface"));
        const below = machine.pixelOf(view, left + width / 2, top + height + 3);
        const away = machine.pixelOf(view, left + width / 2, top + height + 100);
        verify(below.r < away.r, below + " and " + away);
    }

    function test_onlyTheCurrentCardIsATabStop() {
        show([shop, api]);
        for (const name of ["open", "expand", "stop", "cancel", "confirm"]) {
            compare(findChild(card(0), name).focusPolicy, Qt.StrongFocus, name);
            compare(findChild(card(1), name).focusPolicy, Qt.ClickFocus, name);
        }
    }

    function test_directoryIsATabStopWhileItsCardIsCurrentAndOpen() {
        show([shop, api]);
        const reveal = () => findChild(card(0), "reveal");
        press(0, "expand");
        tryVerify(() => reveal().visible);
        tryVerify(() => card(0).isTabStop && !card(1).isTabStop);
        compare(reveal().focusPolicy, Qt.StrongFocus);
        compare(reveal().tip, "Show in Finder");
        verify(!findChild(card(0), "directory").font.underline);
        keyClick(Qt.Key_Down);
        tryVerify(() => card(1).isTabStop && !card(0).isTabStop);
        compare(reveal().focusPolicy, Qt.ClickFocus);
        keyClick(Qt.Key_Up);
        tryVerify(() => card(0).isTabStop);
        card(0).Accessible.pressAction();
        compare(reveal().focusPolicy, Qt.ClickFocus, "it is leaving");
    }

    function test_detailsLeaveTheFocusElsewhere() {
        show([shop]);
        const refresh = findChild(view, "refresh");
        refresh.forceActiveFocus(Qt.TabFocusReason);
        for (const isOpen of [true, false]) {
            card(0).Accessible.pressAction();
            tryCompare(findChild(card(0), "details"), "opacity", isOpen ? 1 : 0);
            verify(refresh.activeFocus);
        }
    }

    function test_killButtonHasNoHelpText() {
        show([shop]);
        press(0, "stop");
        const confirm = findChild(card(0), "confirm");
        tryCompare(findChild(card(0), "confirmation"), "scale", 1);
        mouseMove(confirm, confirm.width / 2, confirm.height / 2);
        tryVerify(() => confirm.hovered);
        verify(!findChild(confirm, "tip").active);
    }

    function test_questionLeavesTheFocusElsewhere() {
        show([shop]);
        const refresh = findChild(view, "refresh");
        refresh.forceActiveFocus(Qt.TabFocusReason);
        findChild(card(0), "stop").Accessible.pressAction();
        keepQuestion(0);
        wait(0);
        verify(refresh.activeFocus);
        card(0).withdraw();
        verify(!card(0).showKillConfirmation);
        wait(0);
        verify(refresh.activeFocus);
    }

    function test_questionThatIsWithdrawnGivesTheFocusBack_data() {
        return ["cancel", "confirm"].map(name => ({
                    tag: name
                }));
    }

    function test_questionThatIsWithdrawnGivesTheFocusBack(row) {
        show([shop]);
        const stop = findChild(card(0), "stop");
        stop.forceActiveFocus(Qt.TabFocusReason);
        tryVerify(() => card(0).isTabStop);
        keyClick(Qt.Key_Space);
        keepQuestion(0);
        tryCompare(findChild(card(0), "confirmation"), "scale", 1);
        findChild(card(0), row.tag).forceActiveFocus(Qt.TabFocusReason);
        card(0).withdraw();
        verify(stop.visualFocus);
        const control = stop.parent;
        verify(control.width > stop.width, "the question is still there");
        compare(stop.x + stop.width, control.width, "the button is already where it stays");
    }

    // What changes while the panel is closed is as it stays when it opens.
    function test_nothingMovesOutOfSight() {
        show([shop]);
        const find = name => findChild(card(0), name);
        const open = find("openPlace");
        const details = find("details");
        const arrow = findChild(view, "refresh").contentItem;
        const resting = findChild(arrow, "resting");
        tryVerify(() => !resting.running);
        test.Window.window.visible = false;

        card(0).ask();
        compare([find("confirmation").presence, open.opacity, open.width], [1, 0, 0]);
        card(0).withdraw();
        compare([find("confirmation").presence, open.opacity], [0, 1]);
        verify(open.width > 0);

        card(0).toggleExpand();
        compare([details.opacity, details.height], [1, details.children[0].height]);
        verify(details.height > 0);
        verify(!find("turning").running);
        card(0).toggleExpand();
        compare([details.opacity, details.height], [0, 0]);

        machine.setKill(1, 60000);
        machine.panel.kill(shop.pid);
        compare([card(0).opacity, card(0).scale], [0.5, 0.98]);
        verify(!findChild(find("killing"), "turning").running);
        const label = find("killing").parent;
        compare([label.implicitWidth, label.implicitHeight], [60, 20]);
        machine.setKill(1, 0);
        tryCompare(machine.panel, "killingPid", "");
        compare([card(0).opacity, card(0).scale], [1, 1]);

        machine.setSlow(true);
        machine.panel.refresh();
        tryCompare(machine.panel, "isLoading", true);
        verify(!findChild(arrow, "turning").running);
        machine.setSlow(false);
        tryCompare(machine.panel, "isLoading", false);
        compare([resting.running, arrow.turn], [false, 0]);
    }

    function test_keyboardReachesAndPressesTheControls() {
        show([shop]);
        findChild(card(0), "stop").forceActiveFocus(Qt.TabFocusReason);
        tryVerify(() => card(0).isTabStop);
        keyClick(Qt.Key_Space);
        keepQuestion(0);
        verify(findChild(card(0), "cancel").visualFocus, "the harmless answer first");
        tryCompare(findChild(card(0), "confirmation"), "scale", 1);
        keyClick(Qt.Key_Tab);
        verify(findChild(card(0), "confirm").visualFocus);
        outlastClickSequence();
        keyClick(Qt.Key_Return);
        tryCompare(machine, "log", ["kill 812"]);
    }

    function test_keyHeldDownAsksOnce() {
        show([shop]);
        const stop = findChild(card(0), "stop");
        stop.forceActiveFocus(Qt.TabFocusReason);
        keyPress(Qt.Key_Return);
        machine.repeatKey(stop, Qt.Key_Return);
        keyRelease(Qt.Key_Return);
        verify(card(0).showKillConfirmation);
        verify(findChild(card(0), "cancel").activeFocus);
    }

    function test_clicksOfOneSequenceCountAsOnePress() {
        show([shop]);
        const interval = Application.styleHints.mouseDoubleClickInterval;
        const confirm = findChild(card(0), "confirm");
        let time = 100000;
        machine.click(findChild(card(0), "stop"), time);
        keepQuestion(0);
        tryCompare(findChild(card(0), "confirmation"), "scale", 1);
        for (const later of [80, 80, interval, interval, 1]) {
            time += later;
            machine.click(confirm, time);
            compare(machine.panel.killingPid, "", later + " ms after the press before");
        }
        machine.click(findChild(card(0), "cancel"), time + 80);
        verify(card(0).showKillConfirmation);
        machine.click(confirm, time + 80 + interval + 1);
        compare(machine.panel.killingPid, "812");
        tryCompare(machine, "log", ["kill 812"]);
    }

    function test_clicksCountByTheirOwnTimeHoweverLateTheyArrive() {
        show([shop]);
        machine.click(findChild(card(0), "stop"), 100000);
        keepQuestion(0);
        wait(Application.styleHints.mouseDoubleClickInterval + 1);
        machine.click(findChild(card(0), "confirm"), 100080);
        compare(machine.panel.killingPid, "");
    }

    function test_clickElsewhereBelongsToTheSequence() {
        show([shop]);
        press(0, "stop");
        tryCompare(findChild(card(0), "confirmation"), "scale", 1);
        machine.click(findChild(view, "refresh"), 100000);
        machine.click(findChild(card(0), "confirm"), 100080);
        compare(machine.panel.killingPid, "");
    }

    function test_pressesOnTheAccessibilityBusCountToo() {
        show([shop]);
        findChild(card(0), "stop").Accessible.pressAction();
        keepQuestion(0);
        findChild(card(0), "confirm").Accessible.pressAction();
        compare(machine.panel.killingPid, "");
        outlastClickSequence();
        findChild(card(0), "confirm").Accessible.pressAction();
        tryCompare(machine, "log", ["kill 812"]);
    }

    function test_keyHeldDownKillsNothing_data() {
        return [
            {
                tag: "Space",
                key: Qt.Key_Space
            },
            {
                tag: "Return",
                key: Qt.Key_Return
            }
        ];
    }

    // Held from the first press on, whatever gets the focus meanwhile.
    function test_keyHeldDownKillsNothing(row) {
        show([shop]);
        const confirm = findChild(card(0), "confirm");
        findChild(card(0), "stop").forceActiveFocus(Qt.TabFocusReason);
        keyPress(row.key);
        if (row.key === Qt.Key_Space)
            keyRelease(row.key);
        keepQuestion(0);
        confirm.forceActiveFocus(Qt.TabFocusReason);
        outlastClickSequence();
        for (let repeats = 0; repeats < 3; ++repeats) {
            machine.repeatKey(confirm, row.key);
            compare(machine.panel.killingPid, "");
        }
        keyRelease(row.key);
        compare(machine.panel.killingPid, "");
    }

    function test_keyHeldDownPressesOnce() {
        show([shop]);
        const expand = findChild(card(0), "expand");
        expand.forceActiveFocus(Qt.TabFocusReason);
        keyPress(Qt.Key_Space);
        for (let repeats = 0; repeats < 3; ++repeats) {
            machine.repeatKey(expand, Qt.Key_Space);
            verify(!card(0).isExpanded);
        }
        keyRelease(Qt.Key_Space);
        verify(card(0).isExpanded);
    }

    function test_arrowsMoveBetweenTheCards() {
        show([shop, api]);
        card(0).forceActiveFocus(Qt.TabFocusReason);
        tryVerify(() => card(0).isTabStop);
        keyClick(Qt.Key_Down);
        tryVerify(() => card(1).activeFocus);
        keyClick(Qt.Key_Down);
        verify(card(1).activeFocus, "the last card is the last");
        keyClick(Qt.Key_Up);
        tryVerify(() => card(0).activeFocus);
        keyClick(Qt.Key_Space);
        tryVerify(() => card(0).isExpanded);
    }

    function test_arrowMovesOnFromWhereThePointerPressed_data() {
        return [{ tag: "down", key: Qt.Key_Down, row: 2 }, { tag: "up", key: Qt.Key_Up, row: 0 }];
    }

    function test_arrowMovesOnFromWhereThePointerPressed(arrow) {
        show([shop, api, Object.assign({}, api, { port: 7001, pid: "100" })]);
        press(1, "expand");
        tryCompare(findChild(view, "cards"), "currentIndex", 1);
        keyClick(arrow.key);
        verify(card(arrow.row).activeFocus);
        wait(50);
        verify(card(arrow.row).activeFocus, "it stays there");
    }

    function test_arrowMovesOnFromTheFirstCardToo() {
        show([shop, api]);
        const list = findChild(view, "cards");
        press(1, "expand");
        tryCompare(list, "currentIndex", 1);
        press(0, "expand");
        tryCompare(list, "currentIndex", 0);
        keyClick(Qt.Key_Down);
        verify(card(1).activeFocus);
    }

    function isInView(row) {
        const list = findChild(view, "cards");
        const top = card(row).mapToItem(list, 0, 0).y;
        return top >= 0 && top + card(row).height <= list.height;
    }

    function test_arrowsScrollTheCardIntoView() {
        show(manyCards());
        card(0).forceActiveFocus(Qt.TabFocusReason);
        for (let row = 1; row < 8; ++row) {
            keyClick(Qt.Key_Down);
            verify(card(row).activeFocus && isInView(row), "down to " + row);
        }
        for (let row = 6; row >= 0; --row) {
            keyClick(Qt.Key_Up);
            verify(card(row).activeFocus && isInView(row), "up to " + row);
        }
    }

    function test_pressDoesNotScroll() {
        show(manyCards());
        const list = findChild(view, "cards");
        const row = 4;
        list.contentY = card(row).y + card(row).height - 5 - list.height;
        const place = list.contentY;
        press(row, "stop");
        tryCompare(list, "currentIndex", row);
        wait(1000);
        compare(list.contentY, place);
        verify(!isInView(row));
    }

    function test_listStopsAtItsEnds() {
        show(manyCards());
        const list = findChild(view, "cards");
        const first = list.originY - list.topMargin;
        compare(list.contentY, first);
        mousePress(list, 240, 100);
        for (let y = 110; y < 300; y += 10)
            mouseMove(list, 240, y, 10);
        compare(list.contentY, first);
        mouseRelease(list, 240, 300);
    }

    function test_cardThatOpenedAndWentDoesNotScroll() {
        show([shop, api]);
        const list = findChild(view, "cards");
        press(0, "expand");
        tryVerify(() => list.opening === card(0));
        machine.listen([api]);
        machine.panel.refresh();
        tryVerify(() => list.opening === null);
        const place = list.contentY;
        list.bringIntoView();
        compare(list.contentY, place);
    }

    function test_keysGoToThePanelFirst() {
        show([shop]);
        verify(view.activeFocus);
    }

    function test_frameOfTheWindowIsKnownWhenItIsShown_data() {
        return [{ tag: "frameless", flags: Qt.FramelessWindowHint, isFrameless: true }, { tag: "framed", flags: Qt.Window, isFrameless: false }];
    }

    function test_frameOfTheWindowIsKnownWhenItIsShown(row) {
        const other = createTemporaryObject(windowComponent, test, { flags: row.flags, visible: false });
        view = viewComponent.createObject(other.contentItem, { panel: machine.panel });
        other.visible = true;
        compare(view.isFrameless, row.isFrameless);
    }

    function test_panelTellsOnlyOfChanges() {
        show([]);
        const changes = [];
        machine.panel.backdropChanged.connect(() => changes.push("backdrop"));
        machine.panel.reducesMotionChanged.connect(() => changes.push("motion"));
        for (const backdrop of [Panel.Blurred, Panel.Blurred, Panel.Opaque])
            machine.setBackdrop(backdrop);
        for (const isReduced of [true, true, false])
            machine.reduceMotion(isReduced);
        compare(changes, ["backdrop", "backdrop", "motion", "motion"]);
    }

    function test_badgePulsesUnlessMotionIsReduced() {
        show([shop]);
        const badge = findChild(card(0), "badge");
        tryVerify(() => badge.isPulsing);
        machine.rememberPicture(badge);
        tryVerify(() => machine.hasChanged(badge));
        machine.reduceMotion(true);
        verify(!badge.isPulsing);
        machine.reduceMotion(false);
        verify(badge.isPulsing);
    }

    function test_pointerMarksNoCard() {
        show([shop, api]);
        press(1, "stop");
        tryCompare(findChild(view, "cards"), "currentIndex", 1);
        verify(findChild(card(1), "cancel").activeFocus, "it keeps the focus");
        compare(findChild(card(1), "surface").borderWidth, 1);
        machine.listen([shop]);
        press(1, "confirm");
        tryCompare(findChild(view, "cards"), "count", 1);
        wait(50);
        verify(!card(0).activeFocus);
        compare(findChild(card(0), "surface").borderWidth, 1);

        card(0).forceActiveFocus(Qt.TabFocusReason);
        wait(50);
        verify(card(0).activeFocus, "the keyboard marks it");
        compare(findChild(card(0), "surface").borderWidth, 2);
    }

    function test_pointerMarksNoCardOfAPanelThatWasInactive() {
        show([shop, api]);
        press(0, "expand");
        const other = createTemporaryObject(windowComponent, test);
        other.requestActivate();
        tryCompare(other, "active", true);
        machine.listen([api]);
        machine.panel.refresh();
        tryCompare(findChild(view, "cards"), "count", 1);
        wait(50);
        test.Window.window.requestActivate();
        tryCompare(test.Window.window, "active", true);
        wait(50);
        compare(findChild(card(0), "surface").borderWidth, 1);
    }

    function test_focusOfTheKeyboardGoesOnToTheNextCard() {
        show([shop, api]);
        findChild(card(0), "stop").forceActiveFocus(Qt.TabFocusReason);
        keyClick(Qt.Key_Space);
        tryCompare(findChild(card(0), "confirmation"), "scale", 1);
        keyClick(Qt.Key_Tab);
        outlastClickSequence();
        machine.listen([api]);
        keyClick(Qt.Key_Space);
        tryCompare(findChild(view, "cards"), "count", 1);
        tryVerify(() => card(0).activeFocus);
        compare(findChild(card(0), "surface").borderWidth, 2);
    }

    function test_focusOfTheDetailsGoesToWhatOpensThem_data() {
        const bare = Object.assign({}, shop, { directory: "" });
        const refresh = listeners => {
            machine.listen(listeners);
            machine.panel.refresh();
        };
        return [
            { tag: "closed", change: () => card(0).Accessible.pressAction() },
            { tag: "another opened", change: () => card(1).Accessible.pressAction() },
            { tag: "no directory left", change: () => refresh([bare, api]) }
        ];
    }

    function test_focusOfTheDetailsGoesToWhatOpensThem(row) {
        show([shop, api]);
        const isThere = () => findChild(card(0), "reveal")?.visible ?? false;
        press(0, "expand");
        tryVerify(isThere);
        findChild(card(0), "reveal").forceActiveFocus(Qt.TabFocusReason);
        row.change();
        tryVerify(() => !isThere());
        verify(findChild(card(0), "expand").visualFocus);
    }

    function test_helpTextComesToARestingPointer() {
        show([shop]);
        const stop = findChild(card(0), "stop");
        mouseMove(stop, stop.width / 2, stop.height / 2);
        tryVerify(() => findChild(stop, "tip").item?.opened ?? false, 5000);
        compare(findChild(stop, "tip").item.contentItem.text, "Stop service");
        compare(findChild(stop, "tip").item.contentItem.textFormat, Text.PlainText);
    }

    function test_helpTextStaysInItsWidth() {
        show([shop]);
        const tip = tipComponent.createObject(view, { text: "x".repeat(500) });
        tip.open();
        tryVerify(() => tip.opened);
        compare(tip.width, 436);
        verify(tip.contentItem.lineCount > 1);
        verify(tip.contentItem.contentWidth <= tip.contentItem.width);
        tip.destroy();
    }

    // The right edge of a shown item within the card.
    function rightOf(item, row) {
        return item.mapToItem(card(row), item.width, 0).x;
    }

    function test_nothingOverlapsHoweverLongItIs() {
        show([{
            port: 65535,
            pid: "4194304",
            command: "node node_modules/.bin/vite " + "s".repeat(300) + ".js",
            figures: "104857600 12345.0",
            elapsed: "02:05:00",
            directory: "/srv/" + "w".repeat(200),
            live: true
        }]);
        press(0, "expand");
        tryVerify(() => findChild(card(0), "reveal").visible);
        const open = findChild(card(0), "open").mapToItem(card(0), 0, 0).x;
        compare(findChild(card(0), "memory").text, "100.0 GB");
        compare(findChild(card(0), "cpu").text, "12345% CPU");
        for (const name of ["title", "port", "framework", "memory", "cpu", "uptime"])
            verify(rightOf(findChild(card(0), name), 0) <= open, name);
        const title = findChild(card(0), "title");
        verify(title.truncated);
        compare(rightOf(title, 0), open - 8);
        mouseMove(card(0), 30, 30);
        tryVerify(() => findChild(card(0), "surface").color.a > 0);
        verify(!findChild(title, "whole").active, "the pointer is beside it");
        mouseMove(title, 20, 5);
        tryVerify(() => findChild(title, "whole").active);
        compare(findChild(title, "whole").item.text, title.text);
        for (const name of ["MEM", "Script", "reveal"])
            verify(rightOf(findChild(card(0), name), 0) <= card(0).width - 16, name);
        const reveal = findChild(card(0), "reveal");
        compare(reveal.width, 456 - 32 - 22, "beside the folder");
        compare(reveal.tip, "w".repeat(200) + "\nShow in Finder");
        compare(findChild(card(0), "Script").width, 170);
        compare(card(0).width, 456);
    }

    function test_longFrameworkIsElidedAndToldByItsHelpText() {
        show([shop]);
        const framework = findChild(card(0), "framework");
        mouseMove(framework, framework.width / 2, framework.height / 2);
        tryVerify(() => findChild(card(0), "surface").color.a > 0);
        verify(!findChild(framework, "whole").active, "it tells no more");
        view.width = 390;
        tryVerify(() => framework.truncated);
        verify(rightOf(framework, 0) <= findChild(card(0), "open").mapToItem(card(0), 0, 0).x - 8);
        mouseMove(view, 0, 0);
        tryVerify(() => findChild(card(0), "surface").color.a === 0);
        mouseMove(card(0), 30, 30);
        tryVerify(() => findChild(card(0), "surface").color.a > 0);
        verify(!findChild(framework, "whole").active, "the pointer is beside it");
        mouseMove(framework, framework.width / 2, framework.height / 2);
        tryVerify(() => findChild(framework, "whole").active);
        tryVerify(() => findChild(framework, "whole").item.opened);
        compare(findChild(framework, "whole").item.text, "Vite");
    }

    function test_nameWrittenFromTheRightStandsOnTheLeft() {
        show([Object.assign({}, shop, { directory: "/srv/\u0645\u0634\u0631\u0648\u0639" })]);
        const title = findChild(card(0), "title");
        compare(title.text, "\u0645\u0634\u0631\u0648\u0639");
        compare(title.horizontalAlignment, Text.AlignLeft);
    }

    // Marks that stand on one another, as a process may have them in its directory's name.
    function test_textStaysInsideItsLine() {
        const marks = "\u0301\u0302\u0303\u0304".repeat(20);
        const plain = Object.assign({}, shop, {
            directory: "/srv/HHH",
            command: "node HHH.js"
        });
        const marked = Object.assign({}, shop, {
            directory: "/srv/H" + marks + "HH",
            command: "node H" + marks + "HH.js"
        });
        show([plain]);
        machine.reduceMotion(true);
        press(0, "expand");
        tryCompare(findChild(card(0), "details"), "opacity", 1);
        tryVerify(() => {
            machine.rememberPicture(card(0));
            wait(200);
            return changes().length === 0;
        });
        const texts = ["title", "Script", "directory"].map(name => findChild(card(0), name));
        const lines = texts.map(text => text.mapToItem(card(0), 0, 0, text.width, text.height));

        machine.listen([marked]);
        machine.panel.refresh();
        tryVerify(() => texts.every(text => text.text.length > 6));
        tryVerify(() => {
            const places = changes();
            return lines.every(line => places.some(place => isWithin(place, line)));
        });
        tryVerify(() => changes().every(place => lines.some(line => isWithin(place, line))));
    }

    // The strip below the last line is left out: there two pictures of one card may differ.
    function changes() {
        return machine.changedPlaces(card(0)).filter(place => place.y < card(0).height - 12);
    }

    function isWithin(place, line) {
        return place.x >= Math.floor(line.left) && place.x < Math.ceil(line.right) && place.y >= Math.floor(line.top) && place.y < Math.ceil(line.bottom);
    }

    function test_markupIsShownAsTypedAndLoadsNothing() {
        const name = "<img src=http:\u2215\u2215127.0.0.1:" + machine.trapPort + "\u2215x>";
        const markup = '<img src="http://127.0.0.1:' + machine.trapPort + '/x">';
        show([Object.assign({}, shop, { directory: "/srv/" + name, command: "node " + markup })]);
        compare(findChild(card(0), "title").text, name);
        press(0, "expand");
        tryVerify(() => findChild(card(0), "reveal").visible);
        compare(findChild(card(0), "directory").text, name);
        for (const text of ["title", "directory", "Script"])
            compare(findChild(card(0), text).textFormat, Text.PlainText);
        const reveal = findChild(card(0), "reveal");
        tryCompare(findChild(card(0), "details").children[0], "y", 0);
        mouseMove(reveal, 20, reveal.height / 2);
        tryVerify(() => findChild(reveal, "tip").item?.opened ?? false, 5000);
        verify(findChild(card(0), "directory").font.underline);
        compare(machine.trapped, 0);
    }
}
