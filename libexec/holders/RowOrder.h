#pragma once

#include "libexec/holders/Scan.h"
#include "libexec/sockets/ListeningSocket.h"

namespace tidewick::tools
{

/// Rows of one port stand together, the oldest ancestor first: the first row of a port wins.
void sortByAncestry(Scan &scan, const std::vector<ListeningSocket> &sockets);

} // namespace tidewick::tools
