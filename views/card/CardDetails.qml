import QtQuick
import Tidewick

// The part of an expanded card below its summary.
Column {
    id: details

    required property CardFacts facts
    property bool isTabStop: true
    property bool isExpanded: true
    readonly property bool hasDirectory: facts.workingDirectory !== ""

    // How far below its top the row of values has its baseline, whatever the fonts.
    readonly property real line: Math.ceil(Math.max(pid.ascent, script.ascent))

    signal reveal
    // The button that had the focus goes.
    signal leave(reason: int)

    topPadding: 4 + spacing
    spacing: 10

    Colors {
        id: colors
    }

    // A caption and its value on one line; hidden if there is no value.
    component Labelled: Item {
        id: labelled

        required property real line
        property alias ascent: value.baselineOffset
        property alias caption: caption.text
        property alias value: value.text
        property alias color: value.color
        property alias family: value.font.family
        property alias weight: value.font.weight

        implicitWidth: value.x + value.width
        implicitHeight: Math.ceil(Math.max(caption.y + caption.height, value.y + value.height))
        visible: value.text !== ""

        Colors {
            id: shades
        }

        PlainText {
            id: caption

            objectName: text + " caption"
            y: labelled.line - baselineOffset
            color: shades.white(0.35)
            font.pixelSize: 11
            font.weight: Font.Medium
        }

        ElidedText {
            id: value

            objectName: caption.text
            x: caption.width + 6
            y: labelled.line - baselineOffset
            width: Math.min(implicitWidth, 170)
            color: shades.white(0.6)
            font.pixelSize: 12
        }
    }

    component Process: Labelled {
        family: "monospace"
        weight: Font.Medium
    }

    Rectangle {
        objectName: "separator"
        width: parent.width
        height: 1
        color: colors.white(0.08)
    }

    Row {
        spacing: 14

        Process {
            id: pid

            line: details.line
            caption: "PID"
            value: details.facts.pidFigure
        }

        Process {
            line: details.line
            caption: "MEM"
            value: details.facts.memory
            color: colors.forLevel(details.facts.memoryLevel)
        }

        Labelled {
            id: script

            line: details.line
            caption: "Script"
            value: details.facts.script
        }
    }

    Row {
        spacing: 10
        visible: details.hasDirectory

        Symbol {
            anchors.verticalCenter: parent.verticalCenter
            name: "folder.fill"
            size: 12
            color: colors.white(0.35)
        }

        PlainButton {
            id: revealing

            readonly property bool isElided: width < implicitWidth
            readonly property bool isWanted: details.isExpanded && details.hasDirectory

            objectName: "reveal"
            width: Math.min(implicitWidth, details.width - 22)
            isTabStop: details.isTabStop && (isWanted || activeFocus)
            help: "Show in Finder"
            tip: isElided ? details.facts.directoryName + "\n" + help : help
            onClicked: details.reveal()
            onIsWantedChanged: {
                if (!isWanted && activeFocus)
                    details.leave(visualFocus ? Qt.TabFocusReason : Qt.OtherFocusReason);
            }

            contentItem: PlainText {
                objectName: "directory"
                text: details.facts.directoryName
                color: colors.faded(colors.blue, revealing.hovered ? 1 : 0.9)
                font.pixelSize: 13
                font.underline: revealing.hovered
            }

            HoverHandler {
                cursorShape: Qt.PointingHandCursor
            }
        }
    }
}
