import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Tidewick

// The one setting, 320 by 150 points, in the desktop's own colours.
Rectangle {
    id: view

    required property Settings settings
    // The toggle's value. What the user chooses stays, whether or not it could be carried out.
    property bool launchAtLogin

    implicitWidth: 320
    implicitHeight: 150
    color: system.window

    SystemPalette {
        id: system
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 20
        spacing: 20

        PlainText {
            objectName: "headline"
            text: "General"
            color: system.windowText
            font.pixelSize: 13
            font.weight: Font.Bold
        }

        CheckBox {
            id: toggle

            objectName: "toggle"
            text: "Launch at Login"
            font.pixelSize: 13
            padding: 0
            spacing: 6
            focus: true
            checked: view.launchAtLogin
            palette.windowText: system.windowText
            palette.base: system.base
            palette.mid: system.mid
            palette.text: system.text
            palette.highlight: system.highlight
            Accessible.onPressAction: toggle.click()
            Accessible.onToggleAction: toggle.click()
            Keys.onReturnPressed: toggle.click()
            Keys.onEnterPressed: toggle.click()
            onToggled: {
                view.launchAtLogin = checked;
                view.settings.setLaunchAtLogin(checked);
            }
        }

        Item {
            Layout.fillHeight: true
        }

        PlainText {
            objectName: "version"
            Layout.alignment: Qt.AlignHCenter
            text: "Tidewick v1.0"
            color: system.windowText
            opacity: 0.55
            font.pixelSize: 10
        }
    }
}
