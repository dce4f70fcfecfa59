import QtQuick
import Tidewick

// Asks for a refresh. Its arrow turns while one is under way.
PlainButton {
    id: button

    required property bool isLoading
    // A refresh disables it, which takes the focus away. Qt gives it back, but then for another
    // reason, so that a keyboard's focus would no longer be visible.
    property int givenFor: Qt.NoFocusReason

    Colors {
        id: colors
    }

    padding: 4
    help: "Refresh"
    enabled: !isLoading
    onActiveFocusChanged: {
        if (activeFocus && focusReason !== Qt.OtherFocusReason)
            givenFor = focusReason;
    }
    onEnabledChanged: focusReason = givenFor

    contentItem: RefreshArrow {
        color: colors.white(button.hovered ? 0.9 : 0.7)
        isTurning: button.isLoading
    }
}
