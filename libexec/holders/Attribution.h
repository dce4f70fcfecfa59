#pragma once

#include "libexec/holders/SocketHolders.h"
#include "libexec/sockets/ListeningSocket.h"

namespace tidewick::libexec
{

/// Adds holders for the sockets that no readable descriptor explains: those of other users'
/// services, where all that may be read names one process. Where it names two, or none, nothing is
/// added.
void attributeHidden(SocketHolders &found, const std::vector<ListeningSocket> &sockets);

} // namespace tidewick::libexec
