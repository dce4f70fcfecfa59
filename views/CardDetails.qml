import QtQuick
import Tidewick

// What an expanded card tells besides its summary.
Column {
    id: details

    required property CardFacts facts

    signal reveal

    topPadding: 4
    spacing: 10

    Colors {
        id: colors
    }

    component Caption: PlainText {
        anchors.verticalCenter: parent.verticalCenter
        color: Qt.rgba(1, 1, 1, 0.35)
        font.pixelSize: 11
        font.weight: Font.Medium
    }

    Rectangle {
        width: parent.width
        height: 1
        color: colors.white(0.08)
    }

    Row {
        spacing: 14

        Row {
            spacing: 6

            Caption {
                text: "PID"
            }

            PlainText {
                text: details.facts.pid
                color: colors.white(0.6)
                font.family: "monospace"
                font.pixelSize: 12
                font.weight: Font.Medium
            }
        }

        Row {
            spacing: 6

            Caption {
                text: "MEM"
            }

            PlainText {
                text: details.facts.memory
                color: colors.forLevel(details.facts.memoryLevel)
                font.family: "monospace"
                font.pixelSize: 12
                font.weight: Font.Medium
            }
        }

        Row {
            spacing: 6
            visible: details.facts.script !== ""

            Caption {
                text: "Script"
            }

            PlainText {
                width: Math.min(implicitWidth, 200)
                text: details.facts.script
                color: colors.white(0.6)
                font.pixelSize: 12
            }
        }
    }

    Row {
        spacing: 10
        visible: details.facts.workingDirectory !== ""

        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            name: "folder.fill"
            size: 12
            color: colors.white(0.35)
        }

        PlainButton {
            objectName: "reveal"
            help: "Show in Finder"
            onClicked: details.reveal()

            contentItem: PlainText {
                width: Math.min(implicitWidth, details.width - 40)
                text: details.facts.folder
                color: colors.faded(colors.blue, 0.9)
                font.pixelSize: 13
                Accessible.ignored: true
            }
        }
    }
}
