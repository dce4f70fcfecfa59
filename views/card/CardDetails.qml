import QtQuick
import Tidewick

// The part of an expanded card below its summary.
Column {
    id: details

    required property CardFacts facts
    property bool isTabStop: true

    signal reveal

    topPadding: 4 + spacing
    spacing: 10

    Colors {
        id: colors
    }

    // A caption and its value on one line; hidden if there is no value.
    component Labelled: Row {
        property alias caption: caption.text
        property alias value: value.text
        property alias color: value.color
        property alias family: value.font.family
        property alias weight: value.font.weight

        spacing: 6
        visible: value.text !== ""

        Colors {
            id: shades
        }

        PlainText {
            id: caption

            anchors.verticalCenter: parent.verticalCenter
            color: shades.white(0.35)
            font.pixelSize: 11
            font.weight: Font.Medium
        }

        ElidedText {
            id: value

            objectName: caption.text
            width: Math.min(implicitWidth, 170)
            color: shades.white(0.6)
            font.pixelSize: 12
        }
    }

    component Figure: Labelled {
        family: "monospace"
        weight: Font.Medium
    }

    Rectangle {
        width: parent.width
        height: 1
        color: colors.white(0.08)
    }

    Row {
        spacing: 14

        Figure {
            caption: "PID"
            value: details.facts.pidFigure
        }

        Figure {
            caption: "MEM"
            value: details.facts.memory
            color: colors.forLevel(details.facts.memoryLevel)
        }

        Labelled {
            caption: "Script"
            value: details.facts.script
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
            readonly property bool isElided: width < implicitWidth

            objectName: "reveal"
            width: Math.min(implicitWidth, details.width - 22)
            isTabStop: details.isTabStop
            help: "Show in Finder"
            tip: isElided ? details.facts.directoryName + "\n" + help : help
            onClicked: details.reveal()

            contentItem: PlainText {
                objectName: "directory"
                text: details.facts.directoryName
                color: colors.faded(colors.blue, 0.9)
                font.pixelSize: 13
            }
        }
    }
}
