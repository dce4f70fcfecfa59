import QtQuick
import Tidewick

// The part of a card that is always visible: its name, its address, and what it uses.
Column {
    id: summary

    required property CardFacts facts

    // The list places a card by the height with which it is created.
    Component.onCompleted: forceLayout()

    Colors {
        id: colors
    }

    component Usage: Figure {
        visible: text !== ""
        font.pixelSize: 12
    }

    ElidedText {
        objectName: "title"
        width: parent.width
        text: summary.facts.title
        font.pixelSize: 17
        font.weight: Font.DemiBold
    }

    // All of one kind: in a card that is scaled, texts stand on whole pixels and pictures do not.
    Row {
        topPadding: 2
        spacing: 4

        Figure {
            id: lead

            objectName: "lead"
            text: summary.facts.isLive ? "Live on port" : "Port"
            color: summary.facts.isLive ? colors.faded(colors.green, 0.9) : colors.white(0.5)
            font.pixelSize: 13
        }

        Figure {
            objectName: "port"
            anchors.baseline: lead.baseline
            text: summary.facts.port
            color: summary.facts.isLive ? colors.green : colors.white(0.7)
            font.pixelSize: 13
            font.weight: Font.DemiBold
        }

        Figure {
            objectName: "bullet"
            anchors.verticalCenter: lead.verticalCenter
            visible: framework.visible
            text: "•"
            color: colors.white(0.25)
            font.pixelSize: 10
        }

        Figure {
            id: framework

            objectName: "framework"
            anchors.baseline: lead.baseline
            width: Math.min(implicitWidth, summary.width - x)
            visible: text !== ""
            text: summary.facts.framework
            color: colors.white(0.6)
            font.pixelSize: 13
            font.weight: Font.Medium

            HoverHandler {
                id: hover
            }

            Tip {
                objectName: "whole"
                active: hover.hovered && framework.truncated
                text: framework.text
            }
        }
    }

    Row {
        topPadding: 2
        spacing: 10

        Usage {
            objectName: "memory"
            text: summary.facts.memoryFigure
            color: colors.forLevel(summary.facts.memoryLevel)
        }

        Usage {
            objectName: "cpu"
            text: summary.facts.cpuFigure
            color: colors.forLevel(summary.facts.cpuLevel)
        }

        Usage {
            objectName: "uptime"
            text: summary.facts.uptime
            color: colors.white(0.4)
        }
    }
}
