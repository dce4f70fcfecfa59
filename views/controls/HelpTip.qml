import QtQuick
import Tidewick
import QtQuick.Templates as T

// The help text of the item under the pointer, as plain text.
T.ToolTip {
    id: tip

    x: parent ? (parent.width - implicitWidth) / 2 : 0
    y: parent ? parent.height + 6 : 0
    implicitWidth: Math.min(contentItem.implicitWidth, 420) + leftPadding + rightPadding
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    margins: 8
    horizontalPadding: 8
    verticalPadding: 5
    delay: 600
    closePolicy: T.Popup.NoAutoClose

    Colors {
        id: colors
    }

    background: Rectangle {
        radius: 6
        color: colors.tip
        border.color: colors.white(0.1)
    }
    contentItem: PlainText {
        text: tip.text
        wrapMode: Text.WrapAnywhere
        font.pixelSize: 11
    }
}
