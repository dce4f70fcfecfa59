#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tidewick::libexec
{

/// A listening TCP socket. An IPv4 address has its bytes first in `address`.
struct ListeningSocket
{
    uint64_t inode = 0;
    uint64_t cgroup = 0; ///< 0: not told
    uint32_t user = 0;
    uint16_t port = 0;
    bool isIpv6 = false;
    uint8_t address[16] = {};
};
bool operator==(const ListeningSocket &a, const ListeningSocket &b);

/// Whether it is the address of all, of its family.
bool isUnspecified(const ListeningSocket &socket);

/// lsof's NAME: "*:80", "127.0.0.1:80", "[::1]:80".
std::string addressText(const ListeningSocket &socket);

/// The inode in a link like "socket:[1234]"; 0 for any other link.
uint64_t socketInode(std::string_view link);

} // namespace tidewick::libexec
