import QtQuick
import Tidewick

// The label of the confirming button: the question, or that the kill is running.
Item {
    id: face

    property bool isBusy

    implicitWidth: isBusy ? 60 : label.implicitWidth
    implicitHeight: isBusy ? 20 : label.implicitHeight

    Behavior on implicitWidth {
        enabled: face.visible

        QuestionAnimation {}
    }
    Behavior on implicitHeight {
        enabled: face.visible

        QuestionAnimation {}
    }

    PlainText {
        id: label

        visible: !face.isBusy
        text: "Kill port"
        font.pixelSize: 11
        font.weight: Font.Medium
    }

    Spinner {
        objectName: "killing"
        anchors.centerIn: parent
        magnification: 0.5
        visible: face.isBusy
    }
}
