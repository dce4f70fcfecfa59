import QtQuick
import Tidewick

// Plain text without markup, aligned to the left in any script. None of it
// is drawn outside its lines. It can be read on the accessibility bus.
Text {
    textFormat: Text.PlainText
    color: "white"
    elide: Text.ElideRight
    clip: true
    horizontalAlignment: Text.AlignLeft
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
