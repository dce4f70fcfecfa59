import QtQuick
import Tidewick

// Asks for a refresh. Its arrow turns while one is under way.
PlainButton {
    id: button

    required property bool isLoading
    // Why the user gave it the focus. A refresh disables it, and Qt takes the focus away until the
    // end. Then Qt gives it for another reason, with which the keyboard's frame would be missing.
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
