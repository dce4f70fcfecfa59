import QtQuick
import Tidewick

// A text as it is typed, whatever it holds, and on the left whichever way it is written. None of it
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
