import QtQuick
import Tidewick

// The whole panel: a header with the refresh control, the cards (or why there are none), and a
// footer with the counts and Quit.
FocusScope {
    id: content

    required property Panel panel
    implicitWidth: 480
    implicitHeight: 540
    focus: true
    Window.onVisibilityChanged: isFrameless = (Window.window.flags & Qt.FramelessWindowHint) !== 0
    Keys.onDownPressed: cards.moveTo(cards.currentIndex)

    Colors {
        id: colors
    }

    // Only what composes the screen can show corners, and a frame has its own.
    readonly property bool isRounded: panel.backdrop !== Panel.Opaque && isFrameless
    property bool isFrameless: false

    VisualEffectView {
        objectName: "backdrop"
        anchors.fill: parent
        radius: content.isRounded ? content.panel.cornerRadius : 0
        material: VisualEffect.FullScreenUI
        blending: VisualEffect.BehindWindow
        state: VisualEffect.Active
        emphasized: true
        backdrop: content.panel.backdrop
    }

    Item {
        id: header

        objectName: "header"
        anchors {
            left: parent.left
            right: parent.right
            top: parent.top
            leftMargin: 18
            rightMargin: 18
        }
        height: 44

        Row {
            anchors.verticalCenter: parent.verticalCenter
            spacing: 8

            PlainText {
                text: "Tidewick"
                font.pixelSize: 14
                font.weight: Font.DemiBold
            }

            PlainText {
                anchors.verticalCenter: parent.verticalCenter
                leftPadding: 4
                rightPadding: 4
                text: "—"
                color: colors.white(0.3)
                font.pixelSize: 12
            }

            PlainText {
                anchors.verticalCenter: parent.verticalCenter
                text: "Let me kill your LocalHost"
                color: colors.white(0.5)
                font.pixelSize: 12
            }
        }

        RefreshButton {
            objectName: "refresh"
            anchors {
                right: parent.right
                rightMargin: -padding
                verticalCenter: parent.verticalCenter
            }
            isLoading: content.panel.isLoading
            onClicked: content.panel.refresh()
        }
    }

    // The lines end where the edge begins: both are translucent.
    Rectangle {
        id: headerLine

        objectName: "headerLine"
        anchors {
            left: parent.left
            right: parent.right
            top: header.bottom
            leftMargin: 1
            rightMargin: 1
        }
        height: 1
        color: colors.white(0.1)
    }

    Item {
        id: body

        anchors {
            left: parent.left
            right: parent.right
            top: headerLine.bottom
            bottom: footerLine.top
        }

        LoadingView {
            objectName: "loading"
            anchors.fill: parent
            visible: content.panel.isLoading && content.panel.runningCount === 0
        }

        EmptyStateView {
            objectName: "empty"
            anchors.fill: parent
            visible: !content.panel.isLoading && content.panel.runningCount === 0
        }

        CardList {
            id: cards

            objectName: "cards"
            anchors.fill: parent
            visible: content.panel.runningCount > 0
            panel: content.panel
        }
    }

    Rectangle {
        id: footerLine

        objectName: "footerLine"
        anchors {
            left: parent.left
            right: parent.right
            bottom: footer.top
            leftMargin: 1
            rightMargin: 1
        }
        height: 1
        color: colors.white(0.1)
    }

    Item {
        id: footer

        objectName: "footer"
        anchors {
            left: parent.left
            right: parent.right
            bottom: parent.bottom
            leftMargin: 18
            rightMargin: 18
        }
        height: 36

        Row {
            anchors.verticalCenter: parent.verticalCenter
            spacing: 8

            Row {
                anchors.verticalCenter: parent.verticalCenter
                spacing: 5
                visible: content.panel.liveCount > 0

                RoundedRectangle {
                    objectName: "dot"
                    anchors.verticalCenter: parent.verticalCenter
                    width: 7
                    height: 7
                    radius: 3.5
                    color: colors.green
                }

                Figure {
                    objectName: "live"
                    text: content.panel.liveCount + " live"
                    color: colors.green
                    font.pixelSize: 12
                    font.weight: Font.Medium
                }
            }

            Figure {
                objectName: "running"
                text: content.panel.runningCount + " running"
                color: colors.white(0.45)
                font.pixelSize: 12
            }
        }

        PlainButton {
            id: quit

            objectName: "quit"
            anchors {
                right: parent.right
                verticalCenter: parent.verticalCenter
            }
            leftPadding: 10
            rightPadding: 10
            topPadding: 4
            bottomPadding: 4
            help: "Quit"
            tip: ""
            onClicked: content.panel.quit()

            background: VisualEffectView {
                radius: quit.radius
                material: VisualEffect.HudWindow
                blending: VisualEffect.WithinWindow

                RoundedRectangle {
                    objectName: "quitGround"
                    anchors.fill: parent
                    radius: quit.radius
                    color: colors.white(quit.hovered ? 0.06 : 0)
                }
            }
            contentItem: PlainText {
                text: "Quit"
                color: colors.white(quit.hovered ? 0.9 : 0.7)
                font.pixelSize: 12
                font.weight: Font.Medium
            }
        }
    }

    RoundedRectangle {
        objectName: "edge"
        anchors.fill: parent
        radius: content.isRounded ? content.panel.cornerRadius : 0
        borderColor: colors.white(0.1)
        // Whole pixels: else the corners are thinner than the sides.
        borderWidth: Math.round(Screen.devicePixelRatio) / Screen.devicePixelRatio
    }
}
