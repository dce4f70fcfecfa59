#pragma once

#include "platform/tray/DBusMenu.h"

#include <QString>

namespace tidewick
{

/// How a host shows a number: as its own label beside the icon, in a picture that may be wider than
/// high, or in a square picture.
enum class NumberStyle { label, wide, square };

/// What a host of status notifier items can do, as far as hosts differ.
struct TrayHost
{
    NumberStyle number = NumberStyle::square;
    KeyNames keys = KeyNames::keysym;
    bool takesPixels = true;   // else it draws the icon by its name only
    bool activates = true;     // else every click opens the menu
    bool countsPixels = false; // in what it tells of a click; else points
    bool tellsOfBars = true;   // else it claims to have a bar even when it has none

    friend bool operator==(const TrayHost &, const TrayHost &) = default;
};

/// The host whose process, the owner of the watcher's name, is called `processName`
/// (/proc/PID/comm, proc(5): at most 15 characters).
TrayHost trayHost(const QString &processName);

} // namespace tidewick
