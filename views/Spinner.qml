import QtQuick
import Tidewick

// A spinning progress indicator.
Symbol {
    name: "spinner"
    size: 32
    Accessible.role: Accessible.Indicator
    Accessible.name: "In progress"

    RotationAnimation on rotation {
        running: visible
        loops: Animation.Infinite
        from: 0
        to: 360
        duration: 1000
    }
}
