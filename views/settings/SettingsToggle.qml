import QtQuick
import QtQuick.Templates as T
import Tidewick

// A check box in the desktop's own colours. Pointer, Space, Enter and the accessibility bus
// toggle it; `toggled` tells only of those.
T.CheckBox {
    id: box

    function press(): void {
        toggle();
        toggled();
    }

    // A key that is held down is one press.
    function pressByKey(event: var): void {
        if (!event.isAutoRepeat)
            press();
    }

    implicitWidth: contentItem.implicitWidth + leftPadding
    implicitHeight: contentItem.implicitHeight
    leftPadding: 22
    Accessible.role: Accessible.CheckBox
    Accessible.name: text
    Accessible.checked: checked
    Accessible.onPressAction: press()
    Accessible.onToggleAction: press()
    Keys.onReturnPressed: event => pressByKey(event)
    Keys.onEnterPressed: event => pressByKey(event)

    SystemPalette {
        id: system
    }
    Colors {
        id: colors
    }

    indicator: RoundedRectangle {
        readonly property color ink: system.windowText

        anchors.verticalCenter: parent?.verticalCenter
        width: 14
        height: 14
        radius: 3
        color: box.checked ? system.highlight : system.base
        borderColor: box.visualFocus ? ink : box.checked ? system.highlight : Qt.tint(system.base, colors.faded(ink, 0.5))
        borderWidth: box.visualFocus ? 2 : 1

        Symbol {
            anchors.centerIn: parent
            visible: box.checked
            name: "checkmark"
            size: 10
            weight: Font.DemiBold
            color: system.highlightedText
        }
    }

    contentItem: PlainText {
        text: box.text
        color: system.windowText
        font.pixelSize: 13
        Accessible.ignored: true
    }
}
