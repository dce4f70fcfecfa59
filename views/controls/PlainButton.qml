import QtQuick
import Tidewick
import QtQuick.Templates as T

// A button without a frame of its own, with a visible focus and a help text on hover. It can be
// pressed with the pointer, with Space and Enter, and on the accessibility bus.
T.AbstractButton {
    id: button

    property string help
    // The text of the tip: the help text, sometimes with more.
    property string tip: help
    property bool isTabStop: true
    // That of the corners of what it shows.
    property real radius: 6

    function pressByKey(event: var) {
        if (!event.isAutoRepeat)
            clicked();
    }

    function swallowRepeatedSpace(event: var) {
        event.accepted = event.isAutoRepeat && event.key === Qt.Key_Space;
    }

    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    focusPolicy: isTabStop ? Qt.StrongFocus : Qt.ClickFocus
    hoverEnabled: true
    opacity: down ? 0.7 : 1
    Accessible.role: Accessible.Button
    Accessible.name: help
    Accessible.onPressAction: {
        if (enabled)
            clicked();
    }
    // A held key presses once, when it is released.
    Keys.onPressed: event => swallowRepeatedSpace(event)
    Keys.onReleased: event => swallowRepeatedSpace(event)
    Keys.onReturnPressed: event => pressByKey(event)
    Keys.onEnterPressed: event => pressByKey(event)

    RoundedRectangle {
        objectName: "focusFrame"
        anchors.fill: parent
        anchors.margins: -2
        visible: button.visualFocus
        radius: button.radius + 2
        borderColor: "white"
        borderWidth: 2
        z: 1
    }

    Tip {
        objectName: "tip"
        active: button.tip !== "" && (button.hovered || button.visualFocus)
        text: button.tip
    }
}
