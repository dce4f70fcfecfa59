import QtQuick
import Tidewick

// What the panel shows during the first scan.
Item {
    Colors {
        id: colors
    }

    Column {
        anchors.centerIn: parent
        spacing: 20

        Item {
            anchors.horizontalCenter: parent.horizontalCenter
            width: 32
            height: 32

            Spinner {
                anchors.centerIn: parent
                magnification: 1.3
            }
        }

        PlainText {
            text: "Scanning for local services..."
            color: colors.white(0.5)
            font.pixelSize: 14
        }
    }
}
