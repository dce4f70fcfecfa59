import QtQuick
import Tidewick

// A number, or a text beside one, that can be read on the accessibility bus.
TabularText {
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
