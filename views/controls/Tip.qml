import QtQuick
import Tidewick

// Shows a help text beside its parent while it is active, after a moment.
Loader {
    id: tip

    property string text

    anchors.fill: parent
    sourceComponent: HelpTip {
        visible: true
    }

    Binding {
        target: tip.item
        property: "text"
        value: tip.text
    }
}
