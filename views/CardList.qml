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
    // How the next focus comes to a card that gets it because another one went.
    property int nextFocus: Qt.OtherFocusReason

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

    function followFocus(focused: Item) {
        const card = cardAround(focused);
        if (card && indexAt(card.x, card.y) >= 0)
            currentIndex = indexAt(card.x, card.y);
        else if (focused === list && currentItem)
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

    Connections {
        target: list.Window.window

        function onActiveFocusItemChanged() {
            list.followFocus(list.Window.activeFocusItem);
        }
    }

    delegate: PortCard {
        readonly property CardList cards: ListView.view as CardList

        x: 12
        width: cards ? cards.width - 24 : 0
        panel: cards ? cards.panel : null
        isTabStop: ListView.isCurrentItem
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
