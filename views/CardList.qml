import QtQuick
import Tidewick
import QtQuick.Templates as T

// The cards of all listeners, one of which at most is expanded.
ListView {
    id: list

    required property Panel panel
    // The port of the card that is expanded, or empty.
    property string expandedPort

    function toggleExpand(port: string) {
        expandedPort = expandedPort === port ? "" : port;
    }

    clip: true
    spacing: 10
    topMargin: 12
    bottomMargin: 12
    boundsBehavior: Flickable.StopAtBounds
    model: panel.ports
    Accessible.role: Accessible.List
    Accessible.name: "Listeners"

    delegate: PortCard {
        readonly property CardList cards: ListView.view as CardList

        x: 12
        width: cards ? cards.width - 24 : 0
        panel: cards ? cards.panel : null
        isExpanded: cards ? cards.expandedPort === facts.port : false
        onToggleExpand: cards.toggleExpand(facts.port)
    }

    T.ScrollBar.vertical: T.ScrollBar {
        width: 8
        minimumSize: 0.1
        visible: size < 1

        contentItem: Rectangle {
            radius: 3
            color: Qt.rgba(1, 1, 1, 0.25)
        }
    }
}
