#pragma once

#include <bitset>
#include <string_view>

namespace tidewick::libexec
{

/// A set of ports.
using PortSet = std::bitset<1U << 16U>;
/// The numbers of their own in the text that may be ports listened on: not inside a longer number
/// or an address, nor in a URL, which tells where others listen.
PortSet portsIn(std::string_view text);

} // namespace tidewick::libexec
