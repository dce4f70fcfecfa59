import QtQuick
import Tidewick

// An arrow that turns without end, or comes to rest where it started.
Symbol {
    id: arrow

    required property bool isTurning
    readonly property bool isShown: Window.visibility !== Window.Hidden

    name: "arrow.clockwise"
    size: 13
    weight: Font.Medium

    RotationAnimation on angle {
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
                arrow.angle = 0;
        }
    }

    RotationAnimation {
        id: resting

        target: arrow
        property: "angle"
        to: 360
        duration: 350
        easing.type: Easing.InOutQuad
        onFinished: arrow.angle = 0
    }
}
