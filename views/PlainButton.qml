import QtQuick
import Tidewick
import QtQuick.Templates as T

// A button without a frame of its own, with a visible focus and a help text on hover. It can be
// pressed with the pointer, with Space and Enter, and on the accessibility bus.
T.AbstractButton {
    id: button

    property string help

    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: Accessible.Button
    Accessible.name: help
    Accessible.onPressAction: clicked()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    Rectangle {
        anchors.fill: parent
        anchors.margins: -2
        visible: button.visualFocus
        color: "transparent"
        radius: 8
        border.color: "white"
        border.width: 2
        z: 1
    }
}
