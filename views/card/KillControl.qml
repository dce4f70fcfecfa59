import QtQuick
import Tidewick

// Ends a process after two presses: the first makes room for the question, the second answers it.
// Both count only where they begin a click sequence.
Item {
    id: control

    required property bool isConfirming
    // Whether the process is being ended right now.
    required property bool isBusy
    required property PressSequence presses
    property bool isTabStop: true
    readonly property bool isShown: Window.visibility !== Window.Hidden

    signal asked
    signal cancelled
    signal confirmed

    function reasonOf(button: PlainButton): int {
        return button.visualFocus ? Qt.TabFocusReason : Qt.OtherFocusReason;
    }

    implicitWidth: stop.width + capsule.presence * (capsule.width - stop.width)
    implicitHeight: Math.max(capsule.height, stop.height)
    onIsConfirmingChanged: {
        if (!isConfirming && (cancel.activeFocus || confirm.activeFocus))
            stop.forceActiveFocus(reasonOf(cancel.activeFocus ? cancel : confirm));
    }

    Colors {
        id: colors
    }

    PlainButton {
        id: stop

        objectName: "stop"
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        visible: !control.isConfirming || activeFocus
        isTabStop: control.isTabStop
        help: "Stop service"
        padding: 3
        onClicked: {
            if (control.presses.begins())
                control.asked();
        }

        contentItem: Symbol {
            name: "xmark"
            size: 10
            weight: Font.Medium
            color: colors.white(stop.hovered ? 0.8 : 0.5)
        }
    }

    RoundedRectangle {
        id: capsule

        // From 0, where it is not there, to 1.
        property real presence: control.isConfirming ? 1 : 0

        objectName: "confirmation"
        anchors.right: parent.right
        width: buttons.width + 4
        height: buttons.height + 4
        radius: 12
        color: colors.black(0.3)
        visible: presence > 0
        opacity: presence
        scale: 0.3 + 0.7 * presence
        transformOrigin: Item.Right

        Behavior on presence {
            enabled: control.isShown

            QuestionAnimation {}
        }

        Row {
            id: buttons

            x: 2
            y: 2
            spacing: 4

            PlainButton {
                id: cancel

                objectName: "cancel"
                anchors.verticalCenter: parent.verticalCenter
                isTabStop: control.isTabStop
                enabled: control.isConfirming || activeFocus
                // Not earlier: what is disabled takes the focus without its reason, and so has no
                // frame.
                onEnabledChanged: {
                    if (enabled && stop.activeFocus)
                        forceActiveFocus(control.reasonOf(stop));
                }
                radius: 10
                help: "Cancel"
                onClicked: {
                    if (control.presses.begins())
                        control.cancelled();
                }

                contentItem: Symbol {
                    name: "xmark.circle.fill"
                    size: 20
                    color: colors.faded(colors.red, cancel.hovered ? 0.9 : 0.7)
                }
            }

            PlainButton {
                id: confirm

                objectName: "confirm"
                isTabStop: control.isTabStop
                enabled: control.isConfirming && !control.isBusy
                leftPadding: 8
                rightPadding: 8
                topPadding: 4
                bottomPadding: 4
                radius: 10
                help: "Kill port"
                tip: ""
                onClicked: {
                    if (control.presses.begins())
                        control.confirmed();
                }

                background: RoundedRectangle {
                    radius: confirm.radius
                    color: colors.faded(confirm.hovered ? Qt.lighter(colors.red, 1.1) : colors.red, 0.9)
                }
                contentItem: KillLabel {
                    isBusy: control.isBusy
                }
            }
        }
    }
}
