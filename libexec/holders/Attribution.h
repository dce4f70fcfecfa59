#pragma once

#include "libexec/holders/SocketHolders.h"
#include "libexec/sockets/ListeningSocket.h"

namespace tidewick::libexec
{

/// Adds holders for the sockets that no readable descriptor explains: those of root and of
/// services' users, where all that everybody may read names one process of the socket's user. Where
/// it names two, or none, nothing is added. `proc` is the directory /proc, `cgroups` the tree of
/// cgroups, -1 where there is none.
void attributeHidden(SocketHolders &found, const std::vector<ListeningSocket> &sockets, int proc,
                     int cgroups);

} // namespace tidewick::libexec
