import QtQuick
import Tidewick

// A number, alone or with its unit, that can be read on the accessibility bus.
TabularText {
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
