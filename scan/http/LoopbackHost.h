#pragma once

#include <QByteArray>

#include <sys/socket.h>

namespace tidewick
{

/// Whether `host`, as a URL in lower case holds it, is this machine: "localhost", an IPv4 address
/// in 127.0.0.0/8, "[::1]", or such an IPv4 address mapped into IPv6.
bool isLoopbackHost(const QByteArray &host);

/// The same for the address that a socket is about to connect to.
bool isLoopbackAddress(const sockaddr &address);

} // namespace tidewick
