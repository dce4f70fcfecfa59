#include "libexec/sockets/ListeningSocket.h"

#include "libexec/proc/Words.h"

#include <algorithm>
#include <cstring>

#include <arpa/inet.h>

namespace tidewick::libexec
{
namespace
{

bool isMappedIpv4(const ListeningSocket &socket)
{
    constexpr uint8_t prefix[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
    return socket.isIpv6 && memcmp(socket.address, prefix, sizeof prefix) == 0;
}

} // namespace

bool operator==(const ListeningSocket &a, const ListeningSocket &b)
{
    return a.inode == b.inode && a.cgroup == b.cgroup && a.user == b.user && a.port == b.port &&
           a.isIpv6 == b.isIpv6 && memcmp(a.address, b.address, sizeof a.address) == 0;
}

bool isUnspecified(const ListeningSocket &socket)
{
    return std::all_of(std::begin(socket.address), std::end(socket.address),
                       [](uint8_t byte) { return byte == 0; });
}

std::string addressText(const ListeningSocket &socket)
{
    const std::string port = ':' + std::to_string(socket.port);
    char text[INET6_ADDRSTRLEN] = "";
    if (isMappedIpv4(socket) || !socket.isIpv6) {
        inet_ntop(AF_INET, socket.address + (socket.isIpv6 ? 12 : 0), text, sizeof text);
        return (std::string_view(text) == "0.0.0.0" ? "*" : text) + port;
    }
    if (isUnspecified(socket))
        return '*' + port;
    inet_ntop(AF_INET6, socket.address, text, sizeof text);
    return '[' + std::string(text) + ']' + port;
}

uint64_t socketInode(std::string_view link)
{
    constexpr std::string_view prefix = "socket:[";
    if (!link.starts_with(prefix) || !link.ends_with(']'))
        return 0;
    return parseNumber(link.substr(prefix.size(), link.size() - prefix.size() - 1)).value_or(0);
}

} // namespace tidewick::libexec
