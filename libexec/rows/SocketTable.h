#pragma once

#include "libexec/holders/Scan.h"
#include "libexec/sockets/ListeningSocket.h"

namespace tidewick::tools
{

/// The rows of `lsof -i TCP -P -n -sTCP:LISTEN` (lsof(8), "OUTPUT"), the header above them; nothing
/// where there is no row.
std::string socketTable(const Scan &scan, const std::vector<ListeningSocket> &sockets);

} // namespace tidewick::tools
