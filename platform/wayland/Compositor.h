#pragma once

#include <chrono>
#include <string_view>

namespace tidewick
{

/// Whether the session's Wayland compositor offers `interface` to its clients. False if there is no
/// compositor, or if it does not answer within `timeout`. Asks over a connection of its own.
bool compositorOffers(std::string_view interface, std::chrono::milliseconds timeout);

} // namespace tidewick
