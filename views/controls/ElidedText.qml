import QtQuick
import Tidewick

// A text that may be too long for its place: then a pointer that rests on it shows it whole.
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
