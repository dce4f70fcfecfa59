#include "scan/http/LoopbackHost.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>

using tidewick::isLoopbackAddress;
using tidewick::isLoopbackHost;

namespace
{

bool isLoopbackIpv4(const char *text)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    inet_pton(AF_INET, text, &address.sin_addr);
    return isLoopbackAddress(reinterpret_cast<const sockaddr &>(address));
}

bool isLoopbackIpv6(const char *text)
{
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    inet_pton(AF_INET6, text, &address.sin6_addr);
    return isLoopbackAddress(reinterpret_cast<const sockaddr &>(address));
}

} // namespace

TEST(LoopbackHost, isAHostOfThisMachine)
{
    for (const char *host : {"localhost", "127.0.0.1", "127.255.255.255", "[::1]",
                             "[0:0:0:0:0:0:0:1]", "[::ffff:127.0.0.1]", "[::ffff:7f00:1]"})
        EXPECT_TRUE(isLoopbackHost(host)) << host;
}

TEST(LoopbackHost, isNoOtherText)
{
    for (const char *host : {"", "[", "]", "[]", "::1", "[::1", "[::1x", "::1]", "1::1]", "[::1]]",
                             "localhost.", "127.1", "127.0.0.1.", "0.0.0.0", "128.0.0.1", "[::]",
                             "[::2]", "[fe80::1]", "[::ffff:128.0.0.1]"})
        EXPECT_FALSE(isLoopbackHost(host)) << host;
}

TEST(LoopbackHost, isTheAddressOfASocketToo)
{
    for (const char *address : {"127.0.0.1", "127.0.0.0", "127.255.255.255"})
        EXPECT_TRUE(isLoopbackIpv4(address)) << address;
    for (const char *address : {"0.0.0.0", "126.255.255.255", "128.0.0.0", "192.0.2.1"})
        EXPECT_FALSE(isLoopbackIpv4(address)) << address;
    for (const char *address : {"::1", "::ffff:127.0.0.1"})
        EXPECT_TRUE(isLoopbackIpv6(address)) << address;
    for (const char *address : {"::", "::2", "::127.0.0.1", "::ffff:128.0.0.1", "fe80::1"})
        EXPECT_FALSE(isLoopbackIpv6(address)) << address;
}

TEST(LoopbackHost, isNoAddressOfAnotherFamily)
{
    sockaddr_in address{};
    address.sin_family = AF_UNIX;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_FALSE(isLoopbackAddress(reinterpret_cast<const sockaddr &>(address)));
    sockaddr_in6 longAddress{};
    longAddress.sin6_family = AF_UNIX;
    longAddress.sin6_addr = in6addr_loopback;
    EXPECT_FALSE(isLoopbackAddress(reinterpret_cast<const sockaddr &>(longAddress)));
}
