#pragma once

#include "libexec/holders/SocketHolders.h"
#include "libexec/sockets/ListeningSocket.h"

namespace tidewick::libexec
{

/// Rows of one port stand together, the oldest ancestor first: the first row of a port wins.
void sortByAncestry(SocketHolders &found, const std::vector<ListeningSocket> &sockets);

} // namespace tidewick::libexec
