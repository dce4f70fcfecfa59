#pragma once

#include "libexec/holders/SocketHolders.h"
#include "libexec/sockets/ListeningSocket.h"

namespace tidewick::libexec
{

/// Walks the directory /proc once for the processes that hold one of `sockets`.
SocketHolders findHolders(int proc, const std::vector<ListeningSocket> &sockets);

} // namespace tidewick::libexec
