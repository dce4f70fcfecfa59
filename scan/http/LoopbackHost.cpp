#include "scan/http/LoopbackHost.h"

#include <arpa/inet.h>
#include <netinet/in.h>

namespace tidewick
{
namespace
{

bool isLoopback(const in_addr &address)
{
    return ntohl(address.s_addr) >> 24U == IN_LOOPBACKNET;
}

bool isLoopback(const in6_addr &address)
{
    if (IN6_IS_ADDR_V4MAPPED(&address))
        return address.s6_addr[12] == IN_LOOPBACKNET;
    return IN6_IS_ADDR_LOOPBACK(&address);
}

} // namespace

bool isLoopbackHost(const QByteArray &host)
{
    if (host == "localhost")
        return true;
    in_addr address{};
    if (inet_pton(AF_INET, host.constData(), &address) == 1)
        return isLoopback(address);
    if (!host.startsWith('[') || !host.endsWith(']'))
        return false;
    in6_addr longAddress{};
    return inet_pton(AF_INET6, host.sliced(1, host.size() - 2).constData(), &longAddress) == 1 &&
           isLoopback(longAddress);
}

bool isLoopbackAddress(const sockaddr &address)
{
    if (address.sa_family == AF_INET)
        return isLoopback(reinterpret_cast<const sockaddr_in &>(address).sin_addr);
    return address.sa_family == AF_INET6 &&
           isLoopback(reinterpret_cast<const sockaddr_in6 &>(address).sin6_addr);
}

} // namespace tidewick
