#pragma once

#include "libexec/sockets/ListeningSocket.h"

#include <vector>

namespace tidewick::libexec
{

/// Reads /proc/net/tcp or tcp6 up to its first socket that does not listen: the listening ones come
/// first. A line that does not fit is skipped.
std::vector<ListeningSocket> parseTcpTable(std::string_view table, bool isIpv6);

} // namespace tidewick::libexec
