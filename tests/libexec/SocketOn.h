#pragma once

#include "libexec/sockets/ListeningSocket.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>

/// A socket that listens on that address.
inline tidewick::libexec::ListeningSocket socketOn(const char *address, uint16_t port)
{
    tidewick::libexec::ListeningSocket socket;
    socket.isIpv6 = std::string_view(address).find(':') != std::string_view::npos;
    socket.port = port;
    EXPECT_EQ(inet_pton(socket.isIpv6 ? AF_INET6 : AF_INET, address, socket.address), 1);
    return socket;
}
