#pragma once

#include "libexec/sockets/ListeningSocket.h"

#include <optional>
#include <string_view>
#include <vector>

namespace tidewick::libexec
{

/// The TCP address and port that a docker-proxy was told to listen on.
std::optional<ListeningSocket> forwardedSocket(const std::vector<std::string_view> &arguments);
/// How well that fits a socket.
enum class ProxyMatch { none, wildcard, exact };
ProxyMatch matchForwarder(const ListeningSocket &asked, const ListeningSocket &socket);

} // namespace tidewick::libexec
