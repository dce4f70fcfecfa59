import QtQuick
import Tidewick

// A text as it is typed, whatever it holds. It can be read on the accessibility bus.
Text {
    textFormat: Text.PlainText
    color: "white"
    elide: Text.ElideRight
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
