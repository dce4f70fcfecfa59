import QtQuick

// What the panel shows when nothing listens. It fills the room it is given.
Item {
    implicitWidth: column.implicitWidth
    implicitHeight: column.implicitHeight

    Column {
        id: column

        anchors.centerIn: parent
        spacing: 16

        Image {
            anchors.horizontalCenter: parent.horizontalCenter
            source: "symbols/moon.zzz.fill.svg"
            width: 52
            height: 52
            opacity: 0.15
        }

        Column {
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: 6

            Text {
                objectName: "title"
                anchors.horizontalCenter: parent.horizontalCenter
                text: "No active services"
                textFormat: Text.PlainText
                color: Qt.rgba(1, 1, 1, 0.6)
                font.pixelSize: 17
                font.weight: Font.Medium
            }

            Text {
                objectName: "hint"
                anchors.horizontalCenter: parent.horizontalCenter
                text: "Your local servers will appear here"
                textFormat: Text.PlainText
                color: Qt.rgba(1, 1, 1, 0.35)
                font.pixelSize: 13
            }
        }
    }
}
