import QtQuick
import QtTest
import Tidewick

// How a card is laid out and how it changes, read from its live items.
LooksCase {
    id: test

    name: "Cards"

    // From the bottom of `upper` to the top of `lower`.
    function below(upper, lower) {
        return lower.mapToItem(view, 0, 0).y - upper.mapToItem(view, 0, upper.height).y;
    }

    function toggle(port) {
        findChild(view, "cards").toggleExpand(port);
    }

    function isOpen(row) {
        const details = find(row, "details");
        return details.opacity === 1 && details.height === details.children[0].height;
    }

    // Each place that the details take in the card during `change`, from the first to the last.
    function placesDuring(change, isDone) {
        const details = find(0, "details").children[0];
        const places = [];
        const note = () => places.push(details.y);
        details.yChanged.connect(note);
        change();
        tryVerify(isDone);
        details.yChanged.disconnect(note);
        return places;
    }

    // Their top is above that of their place, which hides it, by what is still to come.
    function test_detailsMoveInFromTheTopAndBack() {
        show([shop]);
        compare(find(0, "PID"), null, "most cards never need them");
        const opening = placesDuring(() => toggle("3000"), () => isOpen(0));
        const height = find(0, "details").children[0].height;
        const hidden = place => place < -1 && place > -height;
        verify(opening.some(hidden), "moves in: " + opening);
        compare(opening[opening.length - 1], 0);
        verify(find(0, "details").clip);
        const closing = placesDuring(() => toggle("3000"), () => find(0, "details").height === 0);
        verify(closing.some(hidden), "moves back: " + closing);
        verify(Math.min(...closing) <= -height, "moves back: " + closing);
        tryVerify(() => find(0, "PID") === null);
    }

    function test_detailsStandTenPointsApart() {
        show([shop]);
        toggle("3000");
        tryVerify(() => isOpen(0));
        const values = find(0, "PID").parent.parent;
        const folder = find(0, "reveal").parent;
        check([
            ["from the separator to the values", below(find(0, "separator"), values), 10],
            ["from the values to the folder", below(values, folder), 10]
        ]);
    }

    function test_detailsShowWhatIsKnown_data() {
        const bare = { command: "redis-server", figures: "0 0.0", directory: "" };
        return [
            { tag: "all is known", change: {}, memory: "600 MB", isKnown: true },
            { tag: "neither script nor directory", change: bare, memory: "0 MB", isKnown: false }
        ];
    }

    function test_detailsShowWhatIsKnown(row) {
        show([Object.assign({}, shop, row.change)]);
        toggle("3000");
        tryVerify(() => isOpen(0));
        check([
            ["MEM", [find(0, "MEM").text, find(0, "MEM").visible], [row.memory, true]],
            ["Script", find(0, "Script").visible, row.isKnown],
            ["folder", symbol(card(0), "folder.fill").visible, row.isKnown],
            ["reveal", find(0, "reveal").visible, row.isKnown]
        ]);
    }

    function test_paddingBelowTheContent() {
        show([shop]);
        const padding = item => card(0).height - item.mapToItem(card(0), 0, item.height).y;
        const summary = find(0, "title").parent;
        check([["below the summary", Math.min(padding(summary), padding(find(0, "badge"))), 16]]);
        toggle("3000");
        tryVerify(() => isOpen(0));
        tryVerify(() => isSame(padding(find(0, "reveal").parent), 16), 5000, "below the details");
    }

    function test_capsuleIsTwoPointsHigherThanItsButtons() {
        show([shop]);
        ask(0);
        const capsule = find(0, "confirmation");
        tryCompare(capsule, "scale", 1);
        const boxes = ["cancel", "confirm"].map(name => box(find(0, name), capsule));
        check([
            ["above", Math.min(...boxes.map(place => place[1])), 2],
            ["below", capsule.height - Math.max(...boxes.map(place => place[1] + place[3])), 2]
        ]);
    }

    // How far each value of `now` is from that of `from` to that of `to`.
    function progress(from, now, to) {
        return now.map((value, index) => (value - from[index]) / (to[index] - from[index]));
    }

    // Time and curve of the first are held by another test.
    function test_questionComesAndGoesAsOneMovement() {
        show([shop]);
        const [open, capsule] = [find(0, "openPlace"), find(0, "confirmation")];
        const control = capsule.parent;
        const state = () => [open.width, open.opacity].concat(
            [capsule.opacity, capsule.scale, control.implicitWidth]);
        const ends = [state(), [0, 0, 1, 1, capsule.width]];
        const changes = [["ask", ...ends], ["withdraw", ends[1], ends[0]]];
        const rightEdge = () => capsule.mapToItem(control, capsule.width, 0).x;
        const onTheWay = { ask: 0, withdraw: 0 };
        // Twice, because a busy machine may miss the way.
        for (const [change, from, to] of changes.concat(changes)) {
            const steps = [];
            card(0)[change]();
            tryVerify(() => {
                fuzzyCompare(rightEdge(), control.width, 0.01);
                steps.push(progress(from, state(), to));
                return isSame(state(), to);
            });
            onTheWay[change] += steps.filter(step => step[0] > 0.05 && step[0] < 0.95).length;
            const alike = step => step.map(() => step[0]);
            check(steps.map((step, index) => [change + " " + index, step, alike(step)]));
        }
        verify(onTheWay.ask > 0 && onTheWay.withdraw > 0, "takes time");
    }

    // What is drawn for another screen's scale takes the place of what was drawn before.
    function test_cardsLookTheSameAfterAScreenOfAnotherScale() {
        show([shop, api]);
        settle();
        const width = machine.inkOf(find(0, "disc")).width;
        machine.rememberPicture(view);
        machine.moveToScreen(view, 1);
        tryVerify(() => machine.inkOf(find(0, "disc")).width > 1.5 * width);
        machine.moveToScreen(view, 0);
        tryVerify(() => !machine.hasChanged(view));
    }

    // The pieces of a frame come back where they were.
    function test_cardLooksTheSameAfterThePointerHasGone() {
        show([shop, api]);
        settle();
        machine.rememberPicture(view);
        mouseMove(card(1), 200, 10);
        tryVerify(() => isSame(find(1, "surface").color, white(0.06)));
        mouseMove(test, 240, 20);
        tryVerify(() => isSame(find(1, "surface").color, white(0)));
        tryVerify(() => !machine.hasChanged(view));
    }

    function test_keyThatOpensACardScrollsItIntoView_data() {
        return [{ tag: "Space", key: Qt.Key_Space }, { tag: "Enter", key: Qt.Key_Enter }];
    }

    function test_keyThatOpensACardScrollsItIntoView(row) {
        const numbers = [1, 2, 3, 4, 5, 6];
        show(numbers.map(n => Object.assign({}, shop, { port: 3000 + n, pid: String(n) })));
        const list = findChild(view, "cards");
        const bottom = () => card(3).mapToItem(list, 0, card(3).height).y;
        card(3).forceActiveFocus(Qt.TabFocusReason);
        tryVerify(() => card(3).isTabStop);
        list.contentY = card(3).y + card(3).height - list.height;
        compare(bottom(), list.height);
        keyClick(row.key);
        tryVerify(() => isOpen(3));
        // Also where the movement swings a little beyond its end.
        tryVerify(() => isSame(bottom(), list.height - list.bottomMargin), 1000, "at the edge");
    }

    // The card is seen once while it opens, and then when it is open.
    function test_stalledOpeningEndsInView() {
        const numbers = [1, 2, 3, 4, 5, 6];
        show(numbers.map(n => Object.assign({}, shop, { port: 3000 + n, pid: String(n) })));
        const list = findChild(view, "cards");
        const bottom = () => card(3).mapToItem(list, 0, card(3).height).y;
        list.contentY = card(3).y + card(3).height - list.height;
        toggle("3004");
        tryVerify(() => find(3, "details").height > 0);
        const end = Date.now() + 1000;
        while (Date.now() < end) {}
        tryVerify(() => isOpen(3));
        tryVerify(() => isSame(bottom(), list.height - list.bottomMargin), 1000, "at the edge");
    }

    // Two cards change in one moment, and the place of the lower one follows.
    function test_cardThatOpensWhileOneAboveClosesStopsAtTheEdge() {
        const numbers = [1, 2, 3, 4, 5, 6];
        show(numbers.map(n => Object.assign({}, shop, { port: 3000 + n, pid: String(n) })));
        const list = findChild(view, "cards");
        const bottom = () => card(3).mapToItem(list, 0, card(3).height).y;
        toggle("3003");
        tryVerify(() => isOpen(2));
        settle();
        list.contentY = card(3).y + card(3).height - list.height;
        toggle("3004");
        tryVerify(() => isOpen(3) && find(2, "details").height === 0);
        settle();
        verify(isSame(bottom(), list.height - list.bottomMargin), "ends at " + bottom());
    }

    // It turns on to where it started.
    function test_refreshArrowComesToRest() {
        show([]);
        const arrow = symbol(view, "arrow.clockwise");
        const resting = Array.from(arrow.resources).find(one => one instanceof RotationAnimation);
        const curve = [resting.duration, resting.easing.type, resting.to];
        let rests = 0;
        resting.finished.connect(() => ++rests);
        check([["return", curve, [350, Easing.InOutQuad, 360]]]);
        machine.setSlow(true);
        mouseClick(findChild(view, "refresh"));
        tryVerify(() => arrow.angle > 0 && arrow.angle < 300);
        verify(!resting.running, "turns first");
        machine.setSlow(false);
        tryVerify(() => rests === 1);
        compare(arrow.angle, 0);
    }
}
