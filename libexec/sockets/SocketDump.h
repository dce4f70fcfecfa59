#pragma once

#include "libexec/sockets/ListeningSocket.h"

#include <optional>
#include <vector>

namespace tidewick::libexec
{

/// This network namespace's listening TCP sockets as sock_diag(7) tells them; none where it is
/// refused.
std::optional<std::vector<ListeningSocket>> socketsFromNetlink();

/// The same from /proc/net/tcp and tcp6, which know no cgroup.
std::vector<ListeningSocket> socketsFromTables();

/// The one, else the other.
std::vector<ListeningSocket> listeningSockets();

} // namespace tidewick::libexec
