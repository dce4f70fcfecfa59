import QtQuick
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

        SettingsToggle {
            objectName: "toggle"
            text: "Launch at Login"
            focus: true
            checked: view.launchAtLogin
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
