import QtQuick
import Tidewick

// A text that may be too long for its place; then its help text shows all of it.
PlainText {
    id: text

    HoverHandler {
        id: hover
    }

    Tip {
        objectName: "whole"
        active: hover.hovered && text.truncated
        text: (parent as PlainText)?.text ?? ""
    }
}
