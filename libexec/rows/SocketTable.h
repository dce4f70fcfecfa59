#pragma once

#include "libexec/holders/SocketHolders.h"
#include "libexec/sockets/ListeningSocket.h"

namespace tidewick::libexec
{

/// The rows of `lsof -i TCP -P -n -sTCP:LISTEN` (lsof(8), "OUTPUT"), the header above them; nothing
/// where there is no row.
std::string socketTable(const SocketHolders &found, const std::vector<ListeningSocket> &sockets);

} // namespace tidewick::libexec
