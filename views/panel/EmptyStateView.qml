import QtQuick
import Tidewick

// What the panel shows if nothing listens. It fills its place.
Item {
    Colors {
        id: colors
    }

    Column {
        anchors.centerIn: parent
        spacing: 16

        Symbol {
            anchors.horizontalCenter: parent.horizontalCenter
            name: "moon.zzz.fill"
            size: 52
            color: colors.white(0.15)
        }

        Column {
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: 6

            PlainText {
                objectName: "title"
                anchors.horizontalCenter: parent.horizontalCenter
                text: "No active services"
                color: colors.white(0.6)
                font.pixelSize: 17
                font.weight: Font.Medium
            }

            PlainText {
                objectName: "hint"
                anchors.horizontalCenter: parent.horizontalCenter
                text: "Your local servers will appear here"
                color: colors.white(0.35)
                font.pixelSize: 13
            }
        }
    }
}
