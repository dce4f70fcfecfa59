import QtQuick
import Tidewick

// One listener: a summary row, details below it while it is expanded, and three actions: open in
// the browser, reveal the directory, and kill, the last one after a second press.
Item {
    id: card

    required property var record
    required property Panel panel
    required property bool isExpanded
    required property PressSequence presses
    required property Pulse pulse
    property bool isInView: true
    // Tab reaches one of the cards, and the arrow keys reach the others from there.
    property bool isTabStop: true
    readonly property CardFacts facts: CardFacts {
        record: card.record
    }
    readonly property bool isBeingKilled: panel !== null && panel.killingPid === facts.pid
    property bool showKillConfirmation: false
    // Whether the details are just entering.
    readonly property bool isOpening: isExpanded && unrolling.running && unrolling.isByToggle
    // Its height, without the part by which the spring overshoots.
    readonly property real steadyHeight: height - Math.max(0, detailsPlace.height - details.height)
    readonly property bool isShown: Window.visibility !== Window.Hidden

    signal toggleExpand
    signal kill

    function ask() {
        showKillConfirmation = true;
        withdrawal.restart();
    }

    function withdraw() {
        showKillConfirmation = false;
    }

    function toggleByKey(event: var) {
        if (!event.isAutoRepeat)
            toggleExpand();
    }

    // In step with the details: the height of the column follows after their last step.
    implicitHeight: summary.height + Math.max(0, detailsPlace.height) + 32
    activeFocusOnTab: isTabStop
    opacity: isBeingKilled ? 0.5 : 1
    scale: isBeingKilled ? 0.98 : 1
    Accessible.role: Accessible.ListItem
    Accessible.name: facts.sentence
    Accessible.focusable: true
    Accessible.onPressAction: toggleExpand()
    onIsExpandedChanged: unrolling.isByToggle = true
    // A card that is created expanded has not been toggled.
    Component.onCompleted: unrolling.isByToggle = false
    Keys.onEscapePressed: event => {
        event.accepted = showKillConfirmation;
        withdraw();
    }
    Keys.onSpacePressed: event => toggleByKey(event)
    Keys.onReturnPressed: event => toggleByKey(event)
    Keys.onEnterPressed: event => toggleByKey(event)

    Behavior on opacity {
        enabled: card.isShown

        NumberAnimation {
            objectName: "dimming"
            duration: killSpring.duration
            easing: killSpring.easing
        }
    }
    Behavior on scale {
        enabled: card.isShown

        NumberAnimation {
            objectName: "shrinking"
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
        id: toggleSpring

        response: 0.3
        dampingFraction: 0.825
    }

    Spring {
        id: expandSpring

        response: 0.35
        dampingFraction: 0.8
    }

    // Counts from the first press, through any refresh.
    Timer {
        id: withdrawal

        objectName: "withdrawal"
        interval: 3000
        onTriggered: card.withdraw()
    }

    HoverHandler {
        id: hover
    }

    TapHandler {
        onTapped: card.toggleExpand()
    }

    CardShadow {
        anchors.fill: parent
    }

    // Only the keyboard gives the card itself the focus.
    RoundedRectangle {
        objectName: "surface"
        anchors.fill: parent
        radius: 14
        color: colors.white(hover.hovered ? 0.06 : 0)
        borderColor: colors.white(card.activeFocus ? 1 : 0.1)
        borderWidth: card.activeFocus ? 2 : 1

        Behavior on color {
            ColorAnimation {
                objectName: "shading"
                duration: 150
                easing.type: Easing.OutQuad
            }
        }
    }

    Column {
        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            margins: 16
        }

        Item {
            id: summary

            width: parent.width
            height: Math.max(42, information.height)

            StatusBadge {
                id: badge

                objectName: "badge"
                isLive: card.facts.isLive
                pulse: card.pulse
                isInView: card.isInView
            }

            CardSummary {
                id: information

                anchors {
                    left: badge.right
                    leftMargin: 14
                    right: controls.left
                    rightMargin: 8
                }
                facts: card.facts
            }

            Row {
                id: controls

                // As high whether or not a part of it is there.
                height: open.implicitHeight
                anchors.right: parent.right
                spacing: 4

                // Gives way to the question, and comes back, in the question's own time.
                Item {
                    id: openPlace

                    readonly property bool isWanted: card.facts.isLive && !card.showKillConfirmation

                    objectName: "openPlace"
                    width: isWanted ? open.implicitWidth : 0
                    height: parent.height
                    opacity: isWanted ? 1 : 0
                    visible: opacity > 0

                    Behavior on width {
                        enabled: card.isShown

                        QuestionAnimation {}
                    }
                    Behavior on opacity {
                        enabled: card.isShown

                        QuestionAnimation {}
                    }

                    PlainButton {
                        id: open

                        objectName: "open"
                        anchors.right: parent.right
                        enabled: openPlace.isWanted
                        isTabStop: card.isTabStop
                        leftPadding: 14
                        rightPadding: 14
                        topPadding: 8
                        bottomPadding: 8
                        radius: 8
                        help: "View in browser"
                        onClicked: card.panel.openPort(card.facts.port)

                        background: RoundedRectangle {
                            radius: open.radius
                            color: open.hovered ? Qt.lighter(colors.blue, 1.1) : colors.blue
                        }
                        contentItem: Row {
                            spacing: 5

                            Symbol {
                                anchors.verticalCenter: parent.verticalCenter
                                name: "arrow.up.forward"
                                size: 11
                                weight: Font.DemiBold
                            }

                            PlainText {
                                text: "Open"
                                font.pixelSize: 13
                                font.weight: Font.DemiBold
                            }
                        }
                    }
                }

                PlainButton {
                    id: expand

                    objectName: "expand"
                    anchors.verticalCenter: parent.verticalCenter
                    isTabStop: card.isTabStop
                    help: card.isExpanded ? "Hide details" : "Show details"
                    padding: 6
                    onClicked: card.toggleExpand()

                    // What was up is down, so it begins half a turn away.
                    Connections {
                        target: card

                        function onIsExpandedChanged() {
                            if (card.isShown)
                                turning.restart();
                        }
                    }

                    NumberAnimation {
                        id: turning

                        objectName: "turning"
                        target: expand.contentItem
                        property: "angle"
                        from: 180 - (expand.contentItem as Symbol).angle
                        to: 0
                        duration: toggleSpring.duration
                        easing: toggleSpring.easing
                    }

                    contentItem: Symbol {
                        name: card.isExpanded ? "chevron.up" : "chevron.down"
                        size: 12
                        weight: Font.Medium
                        color: colors.white(expand.hovered ? 0.8 : 0.5)
                    }
                }

                KillControl {
                    anchors.verticalCenter: parent.verticalCenter
                    isTabStop: card.isTabStop
                    isConfirming: card.showKillConfirmation
                    isBusy: card.isBeingKilled
                    presses: card.presses
                    onAsked: card.ask()
                    onCancelled: card.withdraw()
                    onConfirmed: card.kill()
                }
            }
        }

        // Unrolls from under the summary and fades in.
        Item {
            id: detailsPlace

            objectName: "details"
            width: parent.width
            height: card.isExpanded ? details.height : 0
            visible: height > 0
            opacity: card.isExpanded ? 1 : 0
            clip: true

            Behavior on height {
                enabled: card.isShown

                NumberAnimation {
                    id: unrolling

                    // Otherwise the details themselves have grown or shrunk.
                    property bool isByToggle: false

                    objectName: "unrolling"
                    duration: expandSpring.duration
                    easing: expandSpring.easing
                    onRunningChanged: {
                        if (!running)
                            isByToggle = false;
                    }
                }
            }
            Behavior on opacity {
                enabled: card.isShown

                NumberAnimation {
                    objectName: "fading"
                    duration: expandSpring.duration
                    easing: expandSpring.easing
                }
            }

            // Most cards never need them.
            Loader {
                id: details

                anchors.bottom: parent.bottom
                width: parent.width
                active: card.isExpanded || detailsPlace.height > 0 || unrolling.running
                // Qt 6.4 loads no bound component.
                // qmllint disable unqualified
                sourceComponent: CardDetails {
                    isTabStop: card.isTabStop
                    isExpanded: card.isExpanded
                    facts: card.facts
                    onReveal: card.panel.revealDirectory(card.facts.workingDirectory)
                    onLeave: reason => expand.forceActiveFocus(reason)
                }
                // qmllint enable unqualified
            }
        }
    }
}
