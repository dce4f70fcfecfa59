pragma ComponentBehavior: Bound

import QtQuick
import Tidewick
import QtQuick.Templates as T

// The cards of all listeners, one of which at most is expanded. The arrow keys move between them;
// the current card is the one that has the focus, or had it last.
ListView {
    id: list

    required property Panel panel
    // The port of the card that is expanded, or empty.
    property string expandedPort
    // Whether the keyboard gave the focus that a card has or had last: then it shows, and goes on to the
    // next card when this one goes.
    property bool isByKeyboard: false
    // The card that the view itself gave the focus to.
    property Item given: null

    readonly property PortCard focusedCard: cardAround(Window.activeFocusItem)

    function toggleExpand(port: string) {
        expandedPort = expandedPort === port ? "" : port;
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
        if (item === list) {
            if (currentItem && isByKeyboard)
                currentItem.forceActiveFocus(Qt.TabFocusReason);
        } else if (item && item === given && !isByKeyboard) {
            item.focus = false;
        } else if (focusedCard) {
            isByKeyboard = item === focusedCard || ((item as T.Control)?.visualFocus ?? false);
            makeCurrent(indexAt(focusedCard.x, focusedCard.y), item);
        }
        given = null;
    }

    // The view gives the focus to the card that it is told of; `item`, within that card, keeps it.
    function makeCurrent(row: int, item: Item) {
        if (row < 0 || row === currentIndex)
            return;
        const reason = isByKeyboard ? Qt.TabFocusReason : Qt.MouseFocusReason;
        currentIndex = row;
        item.forceActiveFocus(reason);
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
    keyNavigationEnabled: false
    model: panel.ports
    Accessible.role: Accessible.List
    Accessible.name: "Listeners"
    Keys.onDownPressed: moveTo(currentIndex + 1)
    Keys.onUpPressed: moveTo(currentIndex - 1)
    onCurrentItemChanged: given = currentItem

    PressSequence {
        id: pressSequence

        window: list.Window.window
    }

    // Not within the change itself: a card may just be going.
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
        // Once it has the focus it stays a stop until the focus has moved on.
        isTabStop: ListView.isCurrentItem || list.focusedCard === card
        isExpanded: list.expandedPort === facts.port
        onToggleExpand: list.toggleExpand(facts.port)
        onKill: list.panel.kill(facts.pid)

        // A view puts its delegates at its own left edge, whatever their x is.
        transform: Translate {
            x: 12
        }
    }

    T.ScrollBar.vertical: T.ScrollBar {
        implicitWidth: 10
        padding: 3
        minimumSize: 0.1
        visible: size < 1

        contentItem: Rectangle {
            implicitWidth: 4
            radius: 2
            color: colors.white(0.25)
        }
    }
}
