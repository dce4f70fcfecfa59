import QtQuick
import Tidewick

// Asks for a refresh. Its arrow turns while one is under way.
PlainButton {
    id: button

    required property bool isLoading
    // Disabling it takes the focus away, every few seconds: it takes it back if nobody else did.
    property int heldFocus: Qt.NoFocusReason

    Colors {
        id: colors
    }

    padding: 4
    help: "Refresh"
    enabled: !isLoading
    onActiveFocusChanged: {
        if (activeFocus)
            heldFocus = focusReason;
        else if (enabled)
            heldFocus = Qt.NoFocusReason;
    }
    onEnabledChanged: {
        const isFree = !(Window.activeFocusItem?.activeFocusOnTab ?? false);
        if (enabled && heldFocus !== Qt.NoFocusReason && isFree)
            forceActiveFocus(heldFocus);
    }

    contentItem: RefreshArrow {
        color: colors.white(button.hovered ? 0.9 : 0.7)
        isTurning: button.isLoading
    }
}
