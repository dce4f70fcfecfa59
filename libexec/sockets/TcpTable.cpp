#include "libexec/sockets/TcpTable.h"

#include "libexec/proc/Words.h"

#include <cstring>
#include <optional>

#include <netinet/tcp.h>

namespace tidewick::libexec
{
namespace
{

std::optional<uint32_t> parseHex(std::string_view digits)
{
    if (digits.empty() || digits.size() > 8)
        return std::nullopt;
    uint32_t value = 0;
    for (const char c : digits) {
        if (!isDigit(c) && (c < 'A' || c > 'F'))
            return std::nullopt;
        value = value * 16 + uint32_t(isDigit(c) ? c - '0' : c - 'A' + 10);
    }
    return value;
}

/// "0100007F:1F90" of /proc/net/tcp: the address in 32-bit words of this machine's byte order.
bool parseTableAddress(std::string_view text, ListeningSocket &socket)
{
    const size_t words = socket.isIpv6 ? 4 : 1;
    if (text.size() != words * 8 + 5 || text[words * 8] != ':')
        return false;
    for (size_t i = 0; i < words; ++i) {
        const auto word = parseHex(text.substr(i * 8, 8));
        if (!word)
            return false;
        memcpy(socket.address + i * 4, &*word, 4);
    }
    const auto port = parseHex(text.substr(words * 8 + 1));
    if (!port)
        return false;
    socket.port = uint16_t(*port);
    return true;
}

} // namespace

std::vector<ListeningSocket> parseTcpTable(std::string_view table, bool isIpv6)
{
    std::vector<ListeningSocket> sockets;
    takeLine(table);
    while (!table.empty()) {
        std::string_view line = takeLine(table);
        std::string_view words[10];
        for (std::string_view &word : words)
            word = takeWord(line);
        const auto state = parseHex(words[3]);
        if (state && *state != TCP_LISTEN)
            break;
        ListeningSocket socket;
        socket.isIpv6 = isIpv6;
        const auto user = parseNumber(words[7]);
        const auto inode = parseNumber(words[9]);
        if (!state || !user || *user > UINT32_MAX || !inode || !parseTableAddress(words[1], socket))
            continue;
        socket.user = uint32_t(*user);
        socket.inode = *inode;
        sockets.push_back(socket);
    }
    return sockets;
}

} // namespace tidewick::libexec
