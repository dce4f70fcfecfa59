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
    // How the card that went had its focus: one that the keyboard gave goes to the next card.
    property int nextFocus: Qt.OtherFocusReason

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
    }

    function cardAround(item: Item): PortCard {
        while (item && !(item instanceof PortCard))
            item = item.parent;
        return item as PortCard;
    }

    function followFocus() {
        if (focusedCard && indexAt(focusedCard.x, focusedCard.y) >= 0)
            currentIndex = indexAt(focusedCard.x, focusedCard.y);
        else if (Window.activeFocusItem === list && currentItem && nextFocus === Qt.TabFocusReason)
            currentItem.forceActiveFocus(nextFocus);
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
        readonly property CardList cards: ListView.view as CardList

        x: 12
        width: cards ? cards.width - 24 : 0
        panel: cards ? cards.panel : null
        // Once it has the focus it stays a stop until the focus has moved on.
        isTabStop: ListView.isCurrentItem || (cards?.focusedCard === this)
        isExpanded: cards ? cards.expandedPort === facts.port : false
        onToggleExpand: cards.toggleExpand(facts.port)
        onKill: focusReason => {
            cards.nextFocus = focusReason;
            panel.kill(facts.pid);
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
            color: Qt.rgba(1, 1, 1, 0.25)
        }
    }
}
