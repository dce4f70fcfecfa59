import QtQuick
import Tidewick

// One listener: a summary row, details below it while it is expanded, and three actions: open in
// the browser, reveal the folder, and kill, the last one after a second press.
FocusScope {
    id: card

    required property var record
    required property Panel panel
    required property bool isExpanded
    readonly property CardFacts facts: CardFacts {
        record: card.record
    }
    readonly property bool isBeingKilled: panel !== null && panel.killingPid === facts.pid
    property bool showKillConfirmation: false

    signal toggleExpand

    function withdraw() {
        withdrawal.stop();
        showKillConfirmation = false;
    }

    implicitHeight: column.height + 32
    opacity: isBeingKilled ? 0.5 : 1
    scale: isBeingKilled ? 0.98 : 1
    Accessible.role: Accessible.ListItem
    Accessible.name: facts.sentence
    Keys.onEscapePressed: event => {
        event.accepted = showKillConfirmation;
        withdraw();
    }

    Behavior on opacity {
        NumberAnimation {
            duration: killSpring.duration
            easing: killSpring.easing
        }
    }
    Behavior on scale {
        NumberAnimation {
            duration: killSpring.duration
            easing: killSpring.easing
        }
    }

    Colors {
        id: colors
    }

    Spring {
        id: killSpring

        response: 0.3
        dampingFraction: 0.7
    }

    Spring {
        id: expandSpring

        response: 0.35
        dampingFraction: 0.8
    }

    // Counts from the first press, whatever refreshes come between.
    Timer {
        id: withdrawal

        interval: 3000
        onTriggered: card.showKillConfirmation = false
    }

    Rectangle {
        anchors.fill: parent
        radius: 14
        color: hover.hovered ? colors.white(0.06) : colors.white(0)
        border.color: colors.white(0.1)

        Behavior on color {
            ColorAnimation {
                duration: 150
                easing.type: Easing.OutQuad
            }
        }
    }

    HoverHandler {
        id: hover
    }

    TapHandler {
        onTapped: card.toggleExpand()
    }

    Column {
        id: column

        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            margins: 16
        }
        spacing: 14

        Item {
            width: parent.width
            height: Math.max(42, information.height)

            StatusBadge {
                id: badge

                isLive: card.facts.isLive
            }

            Column {
                id: information

                anchors {
                    left: badge.right
                    leftMargin: 14
                    right: controls.left
                    rightMargin: 8
                }

                PlainText {
                    objectName: "title"
                    width: parent.width
                    text: card.facts.title
                    font.pixelSize: 17
                    font.weight: Font.DemiBold
                }

                Row {
                    width: parent.width
                    spacing: 4

                    PlainText {
                        text: card.facts.isLive ? "Live on port" : "Port"
                        color: card.facts.isLive ? colors.faded(colors.green, 0.9) : colors.white(0.5)
                        font.pixelSize: 13
                    }

                    PlainText {
                        objectName: "port"
                        text: card.facts.port
                        color: card.facts.isLive ? colors.green : colors.white(0.7)
                        font.pixelSize: 13
                        font.weight: Font.DemiBold
                    }

                    PlainText {
                        anchors.verticalCenter: parent.verticalCenter
                        visible: card.facts.framework !== ""
                        text: "•"
                        color: colors.white(0.25)
                        font.pixelSize: 10
                    }

                    PlainText {
                        objectName: "framework"
                        visible: text !== ""
                        text: card.facts.framework
                        color: colors.white(0.6)
                        font.pixelSize: 13
                        font.weight: Font.Medium
                    }
                }

                Row {
                    topPadding: 2
                    spacing: 10

                    PlainText {
                        objectName: "memory"
                        visible: text !== ""
                        text: card.facts.memoryFigure
                        color: colors.forLevel(card.facts.memoryLevel)
                        font.pixelSize: 12
                    }

                    PlainText {
                        objectName: "cpu"
                        visible: text !== ""
                        text: card.facts.cpuFigure
                        color: colors.forLevel(card.facts.cpuLevel)
                        font.pixelSize: 12
                    }

                    PlainText {
                        objectName: "uptime"
                        visible: text !== ""
                        text: card.facts.uptime
                        color: colors.white(0.4)
                        font.pixelSize: 12
                    }
                }
            }

            Row {
                id: controls

                anchors.right: parent.right
                spacing: 4

                PlainButton {
                    objectName: "open"
                    visible: card.facts.isLive && !card.showKillConfirmation
                    leftPadding: 14
                    rightPadding: 14
                    topPadding: 8
                    bottomPadding: 8
                    help: "View in browser"
                    onClicked: card.panel.openPort(card.facts.port)

                    background: Rectangle {
                        radius: 8
                        color: colors.blue
                    }
                    contentItem: Row {
                        spacing: 5

                        Symbol {
                            anchors.verticalCenter: parent.verticalCenter
                            name: "arrow.up.forward"
                            size: 11
                        }

                        PlainText {
                            text: "Open"
                            font.pixelSize: 13
                            font.weight: Font.DemiBold
                            Accessible.ignored: true
                        }
                    }
                }

                PlainButton {
                    objectName: "expand"
                    anchors.verticalCenter: parent.verticalCenter
                    help: card.isExpanded ? "Hide details" : "Show details"
                    padding: 6
                    onClicked: card.toggleExpand()

                    contentItem: Symbol {
                        name: card.isExpanded ? "chevron.up" : "chevron.down"
                        size: 12
                        color: colors.white(0.5)
                    }
                }

                PlainButton {
                    objectName: "stop"
                    anchors.verticalCenter: parent.verticalCenter
                    visible: !card.showKillConfirmation
                    help: "Stop service"
                    padding: 3
                    onClicked: {
                        card.showKillConfirmation = true;
                        withdrawal.restart();
                        confirm.forceActiveFocus();
                    }

                    contentItem: Symbol {
                        name: "xmark"
                        size: 10
                        color: colors.white(0.5)
                    }
                }

                Rectangle {
                    objectName: "confirmation"
                    anchors.verticalCenter: parent.verticalCenter
                    visible: card.showKillConfirmation
                    width: confirmation.width + 4
                    height: confirmation.height + 4
                    radius: 12
                    color: colors.black(0.3)

                    Row {
                        id: confirmation

                        x: 2
                        y: 2
                        spacing: 4

                        PlainButton {
                            objectName: "cancel"
                            help: "Cancel"
                            onClicked: card.withdraw()

                            contentItem: Symbol {
                                name: "xmark.circle.fill"
                                size: 20
                                color: colors.faded(colors.red, 0.7)
                            }
                        }

                        PlainButton {
                            id: confirm

                            objectName: "confirm"
                            leftPadding: 8
                            rightPadding: 8
                            topPadding: 4
                            bottomPadding: 4
                            help: "Kill port"
                            enabled: !card.isBeingKilled
                            onClicked: card.panel.kill(card.facts.pid)

                            background: Rectangle {
                                radius: 10
                                color: colors.faded(colors.red, 0.9)
                            }
                            contentItem: KillLabel {
                                isBusy: card.isBeingKilled
                            }
                        }
                    }
                }
            }
        }

        // Unrolls from under the summary and fades in.
        Item {
            width: parent.width
            height: card.isExpanded ? details.height : 0
            visible: height > 0
            opacity: card.isExpanded ? 1 : 0
            clip: true

            Behavior on height {
                NumberAnimation {
                    duration: expandSpring.duration
                    easing: expandSpring.easing
                }
            }
            Behavior on opacity {
                NumberAnimation {
                    duration: 150
                }
            }

            CardDetails {
                id: details

                anchors.bottom: parent.bottom
                width: parent.width
                facts: card.facts
                onReveal: card.panel.revealFolder(card.facts.workingDirectory)
            }
        }
    }
}
