import QtQuick
import QtTest
import Tidewick

// Every number, colour, size, weight and text of the panel, read from its live items. A row has a
// name, what the items say, and what they are to say.
LooksCase {
    id: test

    name: "Measures"

    readonly property color green: "#30D158"
    readonly property color blue: "#0A84FF"
    readonly property color red: "#FF453A"
    readonly property color orange: "#FF9F0A"

    function gap(left, right) {
        return right.mapToItem(view, 0, 0).x - left.mapToItem(view, left.width, 0).x;
    }

    function test_panel() {
        show([shop, api]);
        const child = name => findChild(view, name);
        const backdrop = child("backdrop");
        check([
            ["panel", [view.implicitWidth, view.implicitHeight], [480, 540]],
            ["backdrop's box", box(backdrop, view), [0, 0, 480, 540]],
            ["backdrop's material, blending and state", [backdrop.material, backdrop.blending, backdrop.state], [15, 0, 1]],
            ["backdrop's emphasis", backdrop.emphasized, true],
            ["backdrop's fill", backdrop.color, Qt.color("#1E1E20")],
            ["edge", [child("edge").borderColor, child("edge").borderWidth, child("edge").radius], [white(0.1), Math.round(Screen.devicePixelRatio) / Screen.devicePixelRatio, 0]],
            ["header's box", box(child("header"), view), [18, 0, 444, 44]],
            ["title", font(text(view, "Tidewick")), [14, Font.DemiBold, white(1)]],
            ["dash", font(text(view, "—")), [12, Font.Normal, white(0.3)]],
            ["dash's padding", [text(view, "—").leftPadding, text(view, "—").rightPadding], [4, 4]],
            ["slogan", font(text(view, "Let me kill your LocalHost")), [12, Font.Normal, white(0.5)]],
            ["refresh", ink(symbol(view, "arrow.clockwise")), [13, Font.Medium, white(0.7)]],
            ["refresh's padding", paddings(child("refresh")), [4, 4, 4, 4]],
            ["refresh's right edge", box(symbol(view, "arrow.clockwise"), view)[0], 480 - 18 - 13],
            ["line below the header", box(child("headerLine"), view), [1, 44, 478, 1]],
            ["its colour", child("headerLine").color, white(0.1)],
            ["line above the footer", box(child("footerLine"), view), [1, 503, 478, 1]],
            ["its colour", child("footerLine").color, white(0.1)],
            ["footer's box", box(child("footer"), view), [18, 504, 444, 36]],
            ["dot", [child("dot").width, child("dot").height, child("dot").radius, child("dot").color], [7, 7, 3.5, green]],
            ["from dot to live", gap(child("dot"), child("live")), 5],
            ["live", font(child("live")), [12, Font.Medium, green]],
            ["live's text", child("live").text, "1 live"],
            ["running", font(child("running")), [12, Font.Normal, white(0.45)]],
            ["running's text", child("running").text, "2 running"],
            ["quit", font(text(view, "Quit")), [12, Font.Medium, white(0.7)]],
            ["quit's padding", paddings(child("quit")), [10, 4, 10, 4]],
            ["quit's ground", [child("quit").background.material, child("quit").background.blending, child("quit").background.state, child("quit").background.radius], [13, 1, 0, 6]],
            ["quit's lighter ground", [box(child("quitGround"), view), child("quitGround").radius], [box(child("quit"), view), 6]],
            ["quit's emphasis", child("quit").background.emphasized, false],
            ["list's margins and spacing", [child("cards").topMargin, child("cards").bottomMargin, child("cards").spacing, card(0).mapToItem(view, 0, 0).x], [12, 12, 10, 12]]
        ]);
    }

    function test_cornersWhereTheDesktopComposes() {
        show([]);
        machine.setBackdrop(Panel.Translucent);
        view.isFrameless = true;
        check([["radius", findChild(view, "backdrop").radius, 12], ["edge", findChild(view, "edge").radius, 12], ["fill", findChild(view, "backdrop").color, Qt.rgba(0x1E / 255, 0x1E / 255, 0x20 / 255, 0.97)]]);
        view.isFrameless = false;
        check([["radius in a frame", findChild(view, "backdrop").radius, 0]]);
    }

    // Both are translucent, and would be brighter where they overlap.
    function test_linesMeetTheEdge_data() {
        return [{ tag: "plain", backdrop: Panel.Opaque }, { tag: "rounded", backdrop: Panel.Translucent }];
    }

    function test_linesMeetTheEdge(data) {
        show([]);
        machine.setBackdrop(data.backdrop);
        view.isFrameless = true;
        const edge = machine.pixelOf(view, 0, 100);
        const line = machine.pixelOf(view, 240, 44);
        verify(distance(edge, machine.pixelOf(view, 4, 100)) > 0.05, "the edge is visible");
        for (const y of [44, 503])
            check([[0, edge], [479, edge], [2, line], [477, line]].map(([x, color]) => ["line " + y + " at " + x, machine.pixelOf(view, x, y), color]));
    }

    Component {
        id: ground

        Rectangle {
            anchors.fill: parent
            color: "#404040"
        }
    }

    // What is really drawn behind the panel.
    function test_fill_data() {
        const row = (tag, backdrop, opacity) => ({
                tag: tag,
                backdrop: backdrop,
                fill: Qt.tint("#404040", Qt.rgba(0x1E / 255, 0x1E / 255, 0x20 / 255, opacity))
            });
        return [row("opaque", Panel.Opaque, 1), row("translucent", Panel.Translucent, 0.97), row("blurred", Panel.Blurred, 0.78)];
    }

    function test_fill(data) {
        createTemporaryObject(ground, test);
        show([]);
        machine.setBackdrop(data.backdrop);
        const places = [[4, 4], [475, 4], [240, 100], [4, 535], [475, 535]];
        check(places.map(place => ["fill at " + place, distance(machine.pixelOf(view, ...place), data.fill) < 0.01, true]));
    }

    // A changed setting changes what is drawn, in place.
    function test_fillFollowsItsSettings() {
        createTemporaryObject(ground, test);
        show([]);
        const backdrop = findChild(view, "backdrop");
        machine.setBackdrop(Panel.Blurred);
        for (const [property, value] of [["emphasized", false], ["blending", VisualEffect.WithinWindow], ["material", VisualEffect.HudWindow], ["state", VisualEffect.Inactive]]) {
            const before = String(machine.pixelOf(view, 240, 100));
            backdrop[property] = value;
            verify(String(machine.pixelOf(view, 240, 100)) !== before, property);
        }
    }

    function test_emptyAndScanning() {
        machine.setSlow(true);
        view = viewOf();
        tryVerify(() => findChild(view, "loading").visible);
        const spinner = symbol(view, "spinner");
        const scanning = text(view, "Scanning for local services...");
        check([
            ["spinner's size", spinner.size, 32 * 1.3],
            ["spinner's box, whose middle is between two pixels at each scale", [spinner.width, spinner.height], [48, 48]],
            ["spinner's place", [spinner.parent.width, spinner.parent.height], [32, 32]],
            ["scanning", font(scanning), [14, Font.Normal, white(0.5)]],
            ["from spinner to text", box(scanning, view)[1] - box(spinner.parent, view)[1] - 32, 20]
        ]);
        machine.setSlow(false);
        tryVerify(() => findChild(view, "empty").visible);
        const title = text(view, "No active services");
        const hint = text(view, "Your local servers will appear here");
        const moon = symbol(view, "moon.zzz.fill");
        check([
            ["moon", [moon.size, moon.color], [52, white(0.15)]],
            ["title", font(title), [17, Font.Medium, white(0.6)]],
            ["hint", font(hint), [13, Font.Normal, white(0.35)]],
            ["from moon to title", box(title, view)[1] - box(moon, view)[1] - 52, 16],
            ["from title to hint", hint.y - title.y - title.height, 6]
        ]);
    }

    function test_summaries() {
        show([shop, api]);
        const grey = symbol(card(1), "circle.fill");
        const open = find(0, "open");
        check([
            ["badge", box(find(0, "badge"), card(0)), [16, 16, 42, 42]],
            ["live disc", [find(0, "disc").color, find(0, "disc").radius], [at(green, 0.15), 21]],
            ["silent disc", find(1, "disc").color, white(0.06)],
            ["ring at rest", [find(0, "ring").diameter, find(0, "ring").lineWidth, find(0, "ring").strength, find(0, "ring").color], [42 * 1.2, 1.5 * 1.2, 0.6, at(green, 0.4)]],
            ["no ring on a silent badge", find(1, "ring").visible, false],
            ["waves", [symbol(card(0), "dot.radiowaves.up.forward").size, symbol(card(0), "dot.radiowaves.up.forward").color], [16, green]],
            ["grey circle", [grey.size, grey.color], [8, white(0.25)]],
            ["name", font(find(0, "title")), [17, Font.DemiBold, white(1)]],
            ["from badge to name", gap(find(0, "badge"), find(0, "title")), 14],
            ["from name to address", box(find(0, "lead"), view)[1] - box(find(0, "title"), view)[1] - find(0, "title").height, 2],
            ["from address to figures", box(find(0, "memory"), view)[1] - box(find(0, "lead"), view)[1] - find(0, "lead").height, 2],
            ["live address", [find(0, "lead").text].concat(font(find(0, "lead"))), ["Live on port", 13, Font.Normal, at(green, 0.9)]],
            ["live port", font(find(0, "port")), [13, Font.DemiBold, green]],
            ["silent address", [find(1, "lead").text].concat(font(find(1, "lead"))), ["Port", 13, Font.Normal, white(0.5)]],
            ["silent port", font(find(1, "port")), [13, Font.DemiBold, white(0.7)]],
            ["bullet", [find(0, "bullet").text].concat(font(find(0, "bullet"))), ["•", 10, Font.Normal, white(0.25)]],
            ["framework", font(find(0, "framework")), [13, Font.Medium, white(0.6)]],
            ["in the address", [gap(find(0, "lead"), find(0, "port")), gap(find(0, "bullet"), find(0, "framework"))], [4, 4]],
            ["between figures", [gap(find(0, "memory"), find(0, "cpu")), gap(find(0, "cpu"), find(0, "uptime"))], [10, 10]],
            ["raised memory", font(find(0, "memory")), [12, Font.Normal, at(orange, 0.8)]],
            ["raised CPU", font(find(0, "cpu")), [12, Font.Normal, at(orange, 0.8)]],
            ["uptime", font(find(0, "uptime")), [12, Font.Normal, white(0.4)]],
            ["normal memory", find(1, "memory").color, white(0.5)],
            ["normal CPU", find(1, "cpu").color, white(0.5)],
            ["open's ground", [open.background.color, open.background.radius], [blue, 8]],
            ["open's padding", paddings(open), [14, 8, 14, 8]],
            ["open's arrow", ink(symbol(open, "arrow.up.forward")), [11, Font.DemiBold, white(1)]],
            ["open's text", font(text(open, "Open")), [13, Font.DemiBold, white(1)]],
            ["from arrow to text", gap(symbol(open, "arrow.up.forward"), text(open, "Open")), 5],
            ["chevron", ink(symbol(card(0), "chevron.down")), [12, Font.Medium, white(0.5)]],
            ["chevron's frame", [find(0, "expand").width, find(0, "expand").height], [24, 24]],
            ["cross", ink(symbol(card(0), "xmark")), [10, Font.Medium, white(0.5)]],
            ["cross's frame", [find(0, "stop").width, find(0, "stop").height], [16, 16]],
            ["between controls", [gap(open, find(0, "expand")), gap(find(0, "expand"), find(0, "stop"))], [4, 4]],
            ["help texts", [open.help, find(0, "stop").help], ["View in browser", "Stop service"]],
            ["surface", [find(0, "surface").radius, find(0, "surface").color, find(0, "surface").borderColor, find(0, "surface").borderWidth], [14, white(0), white(0.1), 1]],
            ["controls of both cards", box(find(0, "stop"), card(0)), box(find(1, "stop"), card(1))],
            ["chevrons of both cards", box(find(0, "expand"), card(0)), box(find(1, "expand"), card(1))]
        ]);
    }

    function test_levels_data() {
        const row = (megabytes, cpu, memoryColor, cpuColor) => ({
                tag: megabytes + " MB, " + cpu + " %",
                figures: Math.round(megabytes * 1024) + " " + cpu,
                memory: memoryColor,
                cpu: cpuColor
            });
        return [row(511, "29.9", white(0.5), white(0.5)), row(512, "30.0", at(orange, 0.8), at(orange, 0.8)), row(2047, "79.9", at(orange, 0.8), at(orange, 0.8)), row(2048, "80.0", at(red, 0.8), at(red, 0.8))];
    }

    function test_levels(data) {
        show([Object.assign({}, shop, { figures: data.figures })]);
        findChild(view, "cards").toggleExpand("3000");
        check([["memory", find(0, "memory").color, data.memory], ["MEM", find(0, "MEM").color, data.memory], ["CPU", find(0, "cpu").color, data.cpu]]);
    }

    function test_details() {
        show([shop]);
        findChild(view, "cards").toggleExpand("3000");
        tryVerify(() => find(0, "details").opacity === 1 && symbol(card(0), "chevron.up").angle === 0);
        const separator = find(0, "separator");
        const values = ["PID", "MEM", "Script"].map(name => find(0, name));
        const captions = values.map(value => find(0, value.objectName + " caption"));
        const directory = find(0, "directory");
        const folder = symbol(card(0), "folder.fill");
        check(captions.map(caption => [caption.text, font(caption), [11, Font.Medium, white(0.35)]]).concat([
            ["separator", [separator.height, separator.color], [1, white(0.08)]],
            ["above the separator", separator.y, 14],
            ["PID", [values[0].text, values[0].font.family].concat(font(values[0])), ["812", "monospace", 12, Font.Medium, white(0.6)]],
            ["MEM", [values[1].text, values[1].font.family].concat(font(values[1])), ["600 MB", "monospace", 12, Font.Medium, at(orange, 0.8)]],
            ["Script", [values[2].text].concat(font(values[2])), ["server.js", 12, Font.Normal, white(0.6)]],
            ["from captions to values", captions.map((caption, index) => gap(caption, values[index])), [6, 6, 6]],
            ["folder", [folder.size, folder.color], [12, white(0.35)]],
            ["directory", [directory.text].concat(font(directory)), ["shop", 13, Font.Normal, at(blue, 0.9)]],
            ["from folder to directory", gap(folder, directory), 10],
            ["help text", find(0, "reveal").help, "Show in Finder"]
        ]));
        const baselines = values.concat(captions).map(text => text.mapToItem(view, 0, text.baselineOffset).y);
        check(baselines.map((line, index) => ["baseline " + index, line, baselines[0]]));
    }

    function test_question() {
        show([shop]);
        const stop = box(find(0, "stop"), view);
        const chevron = box(find(0, "expand"), view);
        ask(0);
        tryCompare(find(0, "confirmation"), "scale", 1);
        const capsule = find(0, "confirmation");
        const confirm = find(0, "confirm");
        tryCompare(find(0, "openPlace"), "width", 0);
        check([
            ["capsule", [capsule.radius, capsule.color], [12, Qt.rgba(0, 0, 0, 0.3)]],
            ["around the buttons", [find(0, "cancel").mapToItem(capsule, 0, 0).x, capsule.width - confirm.mapToItem(capsule, confirm.width, 0).x], [2, 2]],
            ["between the buttons", gap(find(0, "cancel"), confirm), 4],
            ["cancel", [find(0, "cancel").contentItem.size, find(0, "cancel").contentItem.color], [20, at(red, 0.7)]],
            ["confirm's ground", [confirm.background.color, confirm.background.radius], [at(red, 0.9), 10]],
            ["confirm's padding", paddings(confirm), [8, 4, 8, 4]],
            ["confirm's text", font(text(confirm, "Kill port")), [11, Font.Medium, white(1)]],
            ["the chevron's height", box(find(0, "expand"), view)[1], chevron[1]],
            ["the capsule's middle", capsule.mapToItem(view, 0, capsule.height / 2).y, stop[1] + 8]
        ]);
    }

    // All around a button is as much as above it.
    function test_focusFramesFollowTheirButtons() {
        show([shop]);
        ask(0);
        for (const name of ["open", "confirm", "quit"]) {
            const button = findChild(view, name);
            const frame = findChild(button, "focusFrame");
            check([[name, [frame.x, frame.y, frame.borderWidth, frame.borderColor, frame.radius], [-2, -2, 2, white(1), button.background.radius + 2]]]);
        }
        compare(findChild(find(0, "cancel"), "focusFrame").radius, 12);
    }

    function test_busyCard() {
        show([shop]);
        // The card of a killed process leaves the list, and is seen only if a scan brings it back.
        const busy = busyCard.createObject(view, {
            record: card(0).record,
            panel: machine.panel,
            pulse: findChild(view, "clock")
        });
        const confirm = findChild(busy, "confirm");
        busy.ask();
        findChild(busy, "withdrawal").stop();
        tryCompare(findChild(busy, "confirmation"), "scale", 1);
        check([["ready", [confirm.enabled, busy.opacity, busy.scale], [true, 1, 1]]]);
        tryCompare(machine.panel, "isLoading", false);
        machine.setKill(1, 60000);
        machine.panel.kill("812");
        check([["busy", [busy.isBeingKilled, confirm.enabled], [true, false]], ["spinner", symbol(confirm, "spinner").size, 16]]);
        verify(confirm.contentItem.width < 60 && confirm.contentItem.height < 20, "grows");
        check([["grows", movement(findChild(confirm, "asking")), [200, Easing.InOutQuad, []]]]);
        tryVerify(() => isSame([confirm.contentItem.width, confirm.contentItem.height], [60, 20]));
        check([["dims", movement(findChild(busy, "dimming")), spring(0.3, 0.7)], ["shrinks", movement(findChild(busy, "shrinking")), spring(0.3, 0.7)]]);
        tryCompare(machine.panel, "runningCount", 0);
        machine.setSlow(true);
        mouseClick(findChild(view, "refresh"));
        machine.panel.refresh();
        wait(150); // a scan would have begun
        compare(machine.panel.isLoading, false, "no refresh during a kill");
        machine.setSlow(false);
        tryVerify(() => isSame([busy.opacity, busy.scale], [0.5, 0.98]));
        const edge = Array.from({
            length: 33
        }, (one, step) => machine.pixelOf(confirm, 3, 6 + step / 2));
        check(edge.map((color, step) => ["scaled ground at " + (6 + step / 2), color, edge[0]]));
        for (busy.y = 57; busy.y < 61; ++busy.y) {
            const [port, framework] = ["port", "framework"].map(name => machine.inkOf(findChild(busy, name)));
            compare(port.bottom, framework.bottom, "the scaled line at " + busy.y);
        }
        machine.setKill(1, 0);
        tryCompare(machine.panel, "killingPid", "");
        tryVerify(() => isSame([busy.opacity, busy.scale], [1, 1]));
        busy.destroy();
    }

    Component {
        id: busyCard

        PortCard {
            width: 456
            isExpanded: false
            presses: PressSequence {}
        }
    }

    function test_hover() {
        show([shop]);
        const surface = find(0, "surface");
        mouseMove(card(0), 200, 10);
        tryVerify(() => isSame(surface.color, white(0.06)));
        mouseMove(view, 240, 20);
        tryVerify(() => isSame(surface.color, white(0)));
    }

    // What each control changes under the pointer: before and after.
    function hoverAnswers() {
        const lighter = (color, opacity) => at(Qt.lighter(color, 1.1), opacity);
        return {
            quit: [() => [text(view, "Quit").color, findChild(view, "quitGround").color], [white(0.7), white(0)], [white(0.9), white(0.06)]],
            refresh: [() => symbol(view, "arrow.clockwise").color, white(0.7), white(0.9)],
            open: [() => find(0, "open").background.color, blue, lighter(blue, 1)],
            expand: [() => find(0, "expand").contentItem.color, white(0.5), white(0.8)],
            stop: [() => find(0, "stop").contentItem.color, white(0.5), white(0.8)],
            reveal: [() => find(0, "directory").color, at(blue, 0.9), blue],
            cancel: [() => find(0, "cancel").contentItem.color, at(red, 0.7), at(red, 0.9)],
            confirm: [() => find(0, "confirm").background.color, at(red, 0.9), lighter(red, 0.9)]
        };
    }

    function test_controlsAnswerAHover_data() {
        return controls;
    }

    function test_controlsAnswerAHover(row) {
        const button = showControl(row);
        const [color, before, after] = hoverAnswers()[row.tag];
        check([["at rest", color(), before]]);
        mouseMove(button, button.width / 2, button.height / 2);
        tryVerify(() => isSame(color(), after), 5000, "becomes " + after);
        const shape = row.tag === "reveal" ? Qt.PointingHandCursor : Qt.ArrowCursor;
        compare(machine.pointerShape(view), shape);
        mouseMove(view, 240, 20);
        tryVerify(() => isSame(color(), before), 5000, "goes back to " + before);
    }

    function test_controlsAnswerAPress_data() {
        return controls;
    }

    // The pointer leaves before the button is released, so that nothing is done.
    function test_controlsAnswerAPress(row) {
        const button = showControl(row);
        compare(button.opacity, 1);
        mousePress(button, button.width / 2, button.height / 2);
        compare(button.opacity, 0.7);
        mouseMove(view, 240, 20);
        compare(button.opacity, 1);
        mouseRelease(view, 240, 20);
        compare(machine.log, []);
    }

    // All that can be pressed, and when it is there.
    readonly property var controls: [
        { tag: "quit", when: "always" },
        { tag: "refresh", when: "always" },
        { tag: "open", when: "always" },
        { tag: "expand", when: "always" },
        { tag: "stop", when: "always" },
        { tag: "reveal", when: "expanded" },
        { tag: "cancel", when: "asked" },
        { tag: "confirm", when: "asked" }
    ]

    function showControl(row) {
        show([shop]);
        if (row.when === "expanded") {
            findChild(view, "cards").toggleExpand("3000");
        } else if (row.when === "asked") {
            ask(0);
        }
        const button = findChild(view, row.tag);
        tryVerify(() => button.visible && button.enabled);
        settle();
        return button;
    }

    function test_movements() {
        show([shop]);
        const open = find(0, "openPlace");
        check([
            ["time of the question", find(0, "withdrawal").interval, 3000],
            ["swing of the rings", findChild(view, "clock").duration, 1800]
        ]);
        let start = Date.now();
        findChild(view, "cards").toggleExpand("3000");
        const details = find(0, "details");
        const chevron = symbol(card(0), "chevron.up");
        verify(chevron.angle > 0, "the chevron turns");
        tryVerify(() => chevron.angle === 0, 5000, "the chevron has turned");
        tryVerify(() => details.opacity === 1 && details.height === details.children[0].height);
        verify(Date.now() - start > 250, "the card opened in " + (Date.now() - start) + " ms");
        start = Date.now();
        ask(0);
        tryVerify(() => open.width === 0 && open.opacity === 0);
        verify(Date.now() - start > 150, "Open left in " + (Date.now() - start) + " ms");
    }

    Component {
        id: springComponent

        Spring {}
    }

    // Milliseconds and curve.
    function movement(animation) {
        return [animation.duration, animation.easing.type, animation.easing.bezierCurve];
    }

    function spring(response, dampingFraction) {
        return movement(createTemporaryObject(springComponent, test, {
            response: response,
            dampingFraction: dampingFraction
        }));
    }

    // From and to, milliseconds, whether it ends, curve.
    function turn(item) {
        const animation = findChild(item, "turning");
        return [animation.from, animation.to, animation.duration, animation.loops >= 0, animation.easing.type];
    }

    function test_turns() {
        machine.setSlow(true);
        view = viewOf();
        check([
            ["spinner", turn(symbol(view, "spinner")), [0, 360, 1000, false, Easing.Linear]],
            ["refresh arrow", turn(symbol(view, "arrow.clockwise")), [0, 360, 800, false, Easing.Linear]]
        ]);
    }

    // A movement is created with its first run.
    function test_timesAndCurves() {
        show([shop]);
        mouseMove(card(0), 200, 10);
        findChild(view, "cards").toggleExpand("3000");
        ask(0);
        settle();
        const moves = (name, parent) => movement(findChild(parent, name));
        check([
            ["chevron turns", moves("turning", find(0, "expand")), spring(0.3, 0.825)],
            ["details unroll", moves("unrolling", card(0)), spring(0.35, 0.8)],
            ["details fade", moves("fading", card(0)), spring(0.35, 0.8)],
            ["hover fill comes", moves("shading", card(0)), [150, Easing.OutQuad, []]],
            ["Open goes", moves("asking", find(0, "openPlace")), [200, Easing.InOutQuad, []]],
            ["question comes", moves("asking", find(0, "confirmation")), [200, Easing.InOutQuad, []]]
        ]);
    }

    // Ease-in-out, 1.8 seconds from one end to the other, and back.
    function test_ringsSwing() {
        show([shop]);
        const clock = findChild(view, "clock");
        const eased = way => way < 0.5 ? 2 * way * way : 1 - 2 * (1 - way) * (1 - way);
        const values = [];
        let start = 0;
        const note = () => {
            const time = Date.now() - start;
            values.push([time, clock.value, eased(Math.abs(time / 1800 % 2 - 1))]);
        };
        clock.valueChanged.connect(note);
        start = Date.now();
        machine.reduceMotion(false);
        tryVerify(() => values.length > 0 && values[values.length - 1][0] > 3600, 8000);
        clock.valueChanged.disconnect(note);
        const wrong = values.filter(([time, value, wanted]) => Math.abs(value - wanted) > 0.06);
        // This process may be held up between the tick and the note of it.
        verify(wrong.length <= values.length / 20, "time, value, and what it should be: " + wrong.join("; "));
        compare(Math.min(...values.map(row => row[1])), 0);
        // Each frame shows a step of the way, so there are no more of them.
        const steps = values.slice(1).map(([time, value], index) => Math.abs(value - values[index][1]) * clock.steps);
        verify(steps.every(step => step > 0.99), steps.join("; "));
        verify(clock.steps >= 20 && clock.steps <= 27, "20 to 30 frames a second where it is fastest");
    }

    function test_openingScrollsTheWholeCardIntoView() {
        const ports = [1, 2, 3, 4, 5, 6, 7];
        show(ports.map(port => Object.assign({}, shop, { port: 3000 + port, pid: String(port) })).slice(0, 7));
        const list = findChild(view, "cards");
        list.contentY = list.originY - list.topMargin;
        const row = 4;
        list.toggleExpand("3005");
        tryVerify(() => find(row, "details").opacity === 1 && find(row, "details").height === find(row, "details").children[0].height);
        const bottom = card(row).mapToItem(list, 0, card(row).height).y;
        verify(bottom <= list.height && bottom > 100, "bottom at " + bottom);
        const top = card(row).mapToItem(list, 0, 0).y;
        list.toggleExpand("3005");
        tryCompare(find(row, "details"), "height", 0);
        compare(card(row).mapToItem(list, 0, 0).y, top, "collapsing does not jump");
    }

    function test_detailsThatChangeDoNotScroll() {
        const at = directory => [1, 2, 3, 4, 5, 6, 7].map(port => Object.assign({}, shop, { port: 3000 + port, pid: String(port), directory: directory }));
        show(at("/srv/shop"));
        const list = findChild(view, "cards");
        const isStill = () => !find(4, "unrolling").running && !findChild(list, "settling").running;
        list.contentY = list.originY - list.topMargin;
        list.toggleExpand("3005");
        tryVerify(isStill);
        const height = card(4).height;
        list.contentY -= 60;
        const place = list.contentY;
        machine.listen(at(""));
        machine.panel.refresh();
        tryVerify(() => card(4).height !== height);
        tryVerify(isStill);
        compare(list.contentY, place);
    }

    // Its card is a new one, which is expanded as the one before. The end of the list is far below.
    function test_restartedServerDoesNotScroll() {
        const started = second => ["1", second, "3", "4", "5", "6", "7", "8", "9", "10", "11", "12"].map((pid, row) => Object.assign({}, shop, { port: 3001 + row, pid: pid }));
        show(started("2"));
        const list = findChild(view, "cards");
        const isStill = () => !find(1, "unrolling").running && !findChild(list, "settling").running;
        list.toggleExpand("3002");
        tryVerify(isStill);
        const height = card(1).height;
        list.contentY = card(1).y + 40;
        machine.listen(started("77"));
        machine.panel.refresh();
        tryVerify(() => card(1)?.facts.pid === "77" && card(1).height === height);
        tryVerify(isStill);
        compare(list.contentY, card(1).y + 40);
    }

    function test_scrollBar() {
        const many = Array.from({ length: 80 }, (none, row) => Object.assign({}, shop, { port: 3000 + row, pid: String(row + 1) }));
        show(many);
        const bar = findChild(view, "scrollBar");
        const handle = bar.contentItem;
        verify(bar.visible);
        check([
            ["bar", [bar.x + bar.width, bar.width, bar.height], [480, 10, 458]],
            ["handle's width, radius and colour", [handle.width, handle.radius, handle.color], [4, 2, white(0.25)]],
            ["handle's least height", handle.height, 0.1 * (458 - 6)]
        ]);
        machine.listen(many.slice(0, 3));
        machine.panel.refresh();
        tryVerify(() => !bar.visible);
    }

    function test_digitsAreEquallyWide() {
        show([shop, api]);
        const port = find(0, "port");
        const widths = ["1111", "8888", "7415"].map(text => {
            const copy = digits.createObject(test, { text: text });
            const width = copy.implicitWidth;
            copy.destroy();
            return width;
        });
        check([["7415", widths[2], widths[0]], ["8888", widths[1], widths[0]]]);
        verify(port instanceof TabularText);
    }

    function test_helpText() {
        show([]);
        const tip = createTemporaryObject(tipComponent, test, { text: "Refresh" });
        tip.parent = findChild(view, "header");
        tip.open();
        tryVerify(() => tip.opened);
        const ground = tip.background;
        check([
            ["delay", tip.delay, 600],
            ["ground", [ground.color, ground.radius, ground.border.color, ground.border.width], [Qt.color("#3A3A3C"), 6, white(0.1), 1]],
            ["text", font(tip.contentItem), [11, Font.Normal, white(1)]],
            ["padding", paddings(tip), [8, 5, 8, 5]],
            ["from the window's edge", tip.margins, 8],
            ["place", [tip.x + tip.implicitWidth / 2, tip.y], [222, 50]]
        ]);
    }

    Component {
        id: tipComponent

        HelpTip {}
    }

    function test_longFigureIsElided() {
        show([]);
        const figure = createTemporaryObject(digits, test, { text: "Spring Boot 3333", y: 440 });
        const whole = machine.inkOf(figure);
        verify(!figure.truncated);
        figure.width = figure.implicitWidth - 10;
        verify(figure.truncated);
        const part = machine.inkOf(figure);
        const ratio = whole.width / figure.implicitWidth;
        verify(part.width < figure.width * ratio + 2, part + " of " + whole);
        figure.text = "Vite";
        verify(!figure.truncated);
        figure.text = "Spring Boot 3333";
        figure.width = figure.implicitWidth;
        verify(!figure.truncated);
        compare(machine.inkOf(figure), whole);
    }

    // Marks may be heaped on a letter to write over what stands above it.
    function test_marksStayInTheirLine() {
        show([]);
        const frame = createTemporaryObject(heap, test);
        const mark = frame.children[0];
        verify(machine.weightOf(mark, 0) > 0);
        compare(machine.weightOf(mark, 3), machine.weightOf(mark, 0));
    }

    Component {
        id: heap

        Rectangle {
            width: 200
            height: 200
            color: "black"

            PlainText {
                x: 90
                y: 90
                text: "Z" + "\u0301".repeat(40)
            }
        }
    }

    Component {
        id: digits

        TabularText {
            font.pixelSize: 13
        }
    }
}
