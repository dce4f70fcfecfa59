#pragma once

#include "libexec/holders/Scan.h"
#include "libexec/sockets/ListeningSocket.h"

namespace tidewick::tools
{

/// Adds holders for the sockets that no readable descriptor explains: those of other users'
/// services, where all that may be read names one process. Where it names two, or none, nothing is
/// added.
void attributeHidden(Scan &scan, const std::vector<ListeningSocket> &sockets);

} // namespace tidewick::tools
