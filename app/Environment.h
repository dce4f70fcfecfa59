#pragma once

#include <QByteArray>

namespace tidewick
{

/// What the desktop has to show windows with.
struct DisplayServers
{
    bool hasX11 = false;
    bool hasWayland = false;
    bool hasLayerShell = false; // the Wayland compositor places windows at the sides of a screen
};

/// The toolkit's platforms in the order in which it shall try them, as QT_QPA_PLATFORM lists them.
/// Empty leaves the choice to the toolkit. The panel needs a place beside the status item; only X11
/// and the layer shell give it one.
QByteArray platformsFor(const DisplayServers &servers);

/// Sets the variables that the toolkit reads when the application object is made, except those that
/// the user has set, and silences some of its warnings. Drops what would change the tools' output,
/// and lets no broken pipe end the program. Call it before that, while there is one thread.
void prepareEnvironment();

} // namespace tidewick
