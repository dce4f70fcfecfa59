#pragma once

class QDBusConnection;

namespace tidewick
{

/// Whether the session has a GNOME Shell that lays the desktop out in points, as GNOME 48 does
/// under Wayland, and so tells the place of a click in points even where its X11 programs count
/// pixels. Asks the shell, which may take a second.
bool shellCountsPoints(const QDBusConnection &bus);

} // namespace tidewick
