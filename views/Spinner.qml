import QtQuick
import Tidewick

// A spinning progress indicator.
Symbol {
    id: spinner

    name: "spinner"
    size: 32
    Accessible.role: Accessible.Animation
    Accessible.name: "In progress"

    RotationAnimation on rotation {
        running: spinner.visible && spinner.Window.visibility !== Window.Hidden
        loops: Animation.Infinite
        from: 0
        to: 360
        duration: 1000
    }
}
