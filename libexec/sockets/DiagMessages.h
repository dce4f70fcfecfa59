#pragma once

#include "libexec/sockets/ListeningSocket.h"

#include <vector>

namespace tidewick::libexec
{

/// How a buffer of netlink messages ended.
enum class DiagEnd { more, done, interrupted, error };
/// Reads answers of sock_diag(7) to a dump of listening TCP sockets (netlink(7)).
DiagEnd parseDiagMessages(const char *buffer, size_t size, std::vector<ListeningSocket> &sockets);

} // namespace tidewick::libexec
