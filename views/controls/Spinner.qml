import QtQuick
import Tidewick

// A spinning progress indicator.
Symbol {
    id: spinner

    required property real magnification

    name: "spinner"
    size: 32 * magnification
    // An even number of pixels at scales such as 1.25 too, so that the middle is between two.
    width: 8 * Math.ceil(size / 8)
    height: width
    Accessible.role: Accessible.Animation
    Accessible.name: "In progress"

    RotationAnimation on angle {
        objectName: "turning"
        running: spinner.visible && spinner.Window.visibility !== Window.Hidden
        loops: Animation.Infinite
        from: 0
        to: 360
        duration: 1000
    }
}
