import QtQuick
import Tidewick

// An arrow that turns without end, or comes to rest where it started.
Symbol {
    id: arrow

    required property bool isTurning
    // Degrees. It is drawn by steps, because each picture costs as much as one of all the rings.
    property real turn
    readonly property bool isShown: Window.visibility !== Window.Hidden

    name: "arrow.clockwise"
    size: 13
    weight: Font.Medium
    angle: 15 * Math.round(turn / 15)

    RotationAnimation on turn {
        objectName: "turning"
        running: arrow.isTurning && arrow.isShown
        loops: Animation.Infinite
        from: 0
        to: 360
        duration: 800
        onRunningChanged: {
            if (running)
                resting.stop();
            else if (arrow.isShown)
                resting.start();
            else
                arrow.turn = 0;
        }
    }

    RotationAnimation {
        id: resting

        objectName: "resting"
        target: arrow
        property: "turn"
        to: 360
        duration: 350
        easing.type: Easing.InOutQuad
        onFinished: arrow.turn = 0
    }
}
