#pragma once

#include "libexec/holders/Scan.h"
#include "libexec/sockets/ListeningSocket.h"

namespace tidewick::tools
{

/// Walks /proc once for the processes that hold one of `sockets`.
Scan findHolders(const std::vector<ListeningSocket> &sockets);

} // namespace tidewick::tools
