#pragma once

#include "libexec/holders/SocketHolders.h"
#include "libexec/sockets/ListeningSocket.h"

namespace tidewick::libexec
{

/// Rows of one port stand together, and the first one wins: holders that were seen come before
/// inferred ones, those of `viewer` before others', and then the oldest ancestor. `proc` is the
/// directory /proc.
void sortRows(SocketHolders &found, const std::vector<ListeningSocket> &sockets, int proc,
              uint32_t viewer);

} // namespace tidewick::libexec
