#pragma once

#include <QHash>
#include <QSize>
#include <QString>

#include <chrono>
#include <string_view>

namespace tidewick
{

/// Whether the session's Wayland compositor offers `interface` to its clients. False if there is no
/// compositor, or if it does not answer within `timeout`. Asks over a connection of its own.
bool compositorOffers(std::string_view interface, std::chrono::milliseconds timeout);

/// The pixels of each output as it stands, by the output's name, which is the one of the toolkit's
/// screen. The toolkit itself knows whole scales only. Empty in the same cases, and if the
/// compositor tells no names, which came with version 4 of wl_output.
QHash<QString, QSize> outputPixels(std::chrono::milliseconds timeout);

} // namespace tidewick
