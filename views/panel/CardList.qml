pragma ComponentBehavior: Bound

import QtQuick
import Tidewick
import QtQuick.Templates as T

// The cards of all listeners; at most one is expanded. The arrow keys move between them. The
// current card is the one that has the focus or had it last.
ListView {
    id: list

    required property Panel panel
    // The port of the expanded card, or empty.
    property string expandedPort
    // Whether the keyboard set the focus. Then the focus is visible, and moves to the next card if
    // the card disappears.
    property bool isByKeyboard: false
    // The card that the view itself gave the list's focus to.
    property Item given: null
    // The card that opens, or opened last.
    property PortCard opening: null

    readonly property PortCard focusedCard: cardAround(Window.activeFocusItem)

    function toggleExpand(port: string) {
        expandedPort = expandedPort === port ? "" : port;
    }

    // Scrolls with a card that opens, so that all of it is in view. It waits until all cards have
    // made the same step, because one that closes moves those below it.
    function follow(card: PortCard) {
        if (!card.isOpening)
            return;
        opening = card;
        settling.restart();
    }

    function bringIntoView() {
        if (!opening)
            return;
        forceLayout();
        const lowest = opening.y - topMargin;
        const highest = opening.y + opening.steadyHeight + bottomMargin - height;
        contentY = Math.min(lowest, Math.max(highest, contentY));
    }

    function moveTo(row: int) {
        if (row < 0 || row >= count)
            return;
        currentIndex = row;
        positionViewAtIndex(row, ListView.Contain);
        currentItem.forceActiveFocus(Qt.TabFocusReason);
        given = null;
    }

    function cardAround(item: Item): PortCard {
        while (item && !(item instanceof PortCard))
            item = item.parent;
        return item as PortCard;
    }

    function followFocus() {
        const item = Window.activeFocusItem;
        // An inactive window has none.
        if (!item)
            return;
        if (item === list) {
            if (currentItem && isByKeyboard)
                currentItem.forceActiveFocus(Qt.TabFocusReason);
        } else if (item === given && !isByKeyboard) {
            item.focus = false;
        } else if (focusedCard) {
            isByKeyboard = item === focusedCard || ((item as T.Control)?.visualFocus ?? false);
            makeCurrent(indexAt(focusedCard.x, focusedCard.y), item);
        }
        given = null;
    }

    // The view moves the focus to the current card; `item` within that card keeps it.
    function makeCurrent(row: int, item: Item) {
        if (row >= 0 && row !== currentIndex) {
            const reason = isByKeyboard ? Qt.TabFocusReason : Qt.MouseFocusReason;
            currentIndex = row;
            item.forceActiveFocus(reason);
        }
    }

    Colors {
        id: colors
    }

    clip: true
    spacing: 10
    topMargin: 12
    bottomMargin: 12
    boundsBehavior: Flickable.StopAtBounds
    highlightFollowsCurrentItem: false
    // Qt 6.4 creates the cards of the buffer a little at a time, and keeps half a kilobyte of each
    // that goes meanwhile.
    cacheBuffer: 0
    model: panel.ports
    Accessible.role: Accessible.List
    Accessible.name: "Listeners"
    Keys.onDownPressed: moveTo(currentIndex + 1)
    Keys.onUpPressed: moveTo(currentIndex - 1)
    // Where the focus is elsewhere, the view gives it to nobody.
    onCurrentItemChanged: given = focus ? currentItem : null

    PressSequence {
        id: pressSequence

        window: list.Window.window
    }

    Pulse {
        id: clock

        objectName: "clock"
        window: list.Window.window
        isWanted: list.panel.liveCount > 0 && !list.panel.reducesMotion
    }

    Timer {
        id: settling

        objectName: "settling"
        interval: 0
        onTriggered: list.bringIntoView()
    }

    // Not during the change itself, because a card may be about to disappear.
    Timer {
        id: following

        interval: 0
        onTriggered: list.followFocus()
    }

    Connections {
        target: list.Window.window

        function onActiveFocusItemChanged() {
            following.restart();
        }
    }

    delegate: PortCard {
        id: card

        width: list.width - 24
        panel: list.panel
        presses: pressSequence
        pulse: clock
        // Its badge's ring, which is larger than the badge.
        isInView: y + 64 > list.contentY && y + 10 < list.contentY + list.height
        // A card with the focus stays reachable with Tab until the focus has moved on.
        isTabStop: ListView.isCurrentItem || list.focusedCard === card
        isExpanded: list.expandedPort === facts.port
        onToggleExpand: list.toggleExpand(facts.port)
        onHeightChanged: list.follow(card)
        onKill: list.panel.kill(facts.pid)

        // Newer Qt sets the x of a delegate to 0, so the margin is a translation.
        transform: Translate {
            x: 12
        }
    }

    T.ScrollBar.vertical: T.ScrollBar {
        objectName: "scrollBar"
        implicitWidth: 10
        padding: 3
        minimumSize: 0.1
        visible: size < 1

        contentItem: Rectangle {
            radius: 2
            color: colors.white(0.25)
        }
    }
}
