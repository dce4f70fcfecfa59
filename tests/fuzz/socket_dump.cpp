// The kernel's lists of listening sockets, by netlink and as texts: any bytes are taken for one.

#include "libexec/sockets/DiagMessages.h"
#include "libexec/sockets/TcpTable.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/Grammar.h"

#include <arpa/inet.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>

#include <algorithm>
#include <cstring>

using namespace tidewick::libexec;

namespace
{

/// The socket as a line of /proc/net/tcp or tcp6.
std::string tableLine(const ListeningSocket &socket)
{
    std::string address;
    for (size_t i = 0; i < (socket.isIpv6 ? 16 : 4); i += 4) {
        uint32_t word = 0;
        std::memcpy(&word, socket.address + i, sizeof word);
        char digits[9];
        std::snprintf(digits, sizeof digits, "%08X", word);
        address += digits;
    }
    char port[6];
    std::snprintf(port, sizeof port, ":%04X", unsigned(socket.port));
    return "0: " + address + port + " 0:0 0A 0:0 0:0 0 " + std::to_string(socket.user) + " 0 " +
           std::to_string(socket.inode) + '\n';
}

void checkAddress(const ListeningSocket &socket)
{
    std::string text = addressText(socket);
    const std::string port = ':' + std::to_string(socket.port);
    promise(text.ends_with(port), "an address ends with its port");
    text.resize(text.size() - port.size());
    if (text == "*")
        return;
    const bool isBracketed = text.starts_with('[') && text.ends_with(']');
    if (isBracketed)
        text = text.substr(1, text.size() - 2);
    uint8_t address[16] = {};
    promise(inet_pton(isBracketed ? AF_INET6 : AF_INET, text.c_str(), address) == 1,
            "a host is an address");
    const size_t offset = socket.isIpv6 && !isBracketed ? 12 : 0; // an IPv4 address within IPv6
    promise(std::memcmp(address, socket.address + offset, isBracketed ? 16 : 4) == 0,
            "an address is read back");
}

void checkMessages(const char *data, size_t size)
{
    std::vector<ListeningSocket> sockets;
    parseDiagMessages(data, size, sockets);
    promise(sockets.size() <= size / (sizeof(nlmsghdr) + sizeof(inet_diag_msg)),
            "a socket takes a whole message");
    for (const ListeningSocket &socket : sockets) {
        const auto isZero = [](uint8_t byte) {
            return byte == 0;
        };
        promise(socket.isIpv6 || std::all_of(socket.address + 4, std::end(socket.address), isZero),
                "an IPv4 address has four bytes");
        checkAddress(socket);
    }
}

void checkTable(const std::string &text, bool isIpv6)
{
    const auto sockets = parseTcpTable(text, isIpv6);
    countRecords(sockets.size());
    std::string again = "header\n";
    for (const ListeningSocket &socket : sockets) {
        promise(socket.isIpv6 == isIpv6, "each table has its family");
        checkAddress(socket);
        again += tableLine(socket);
    }
    promise(parseTcpTable(again, isIpv6) == sockets, "a row that was read reads the same again");
    ListeningSocket other;
    other.isIpv6 = isIpv6;
    promise(parseTcpTable(text + "\n1: 0:0 0:0 01\n" + tableLine(other), isIpv6) == sockets,
            "nothing is read behind the first connection");
}

} // namespace

QByteArray validInput(Random &random)
{
    const char *const digits = "0123456789ABCDEF";
    const auto hex = [&](int count) {
        QByteArray text;
        for (int i = 0; i < count; ++i)
            text += digits[random() % 16];
        return text;
    };
    const int words = random() % 2 == 0 ? 8 : 32;
    QByteArray table = "  sl  local_address rem_address   st\n";
    for (auto rows = random() % 6; rows > 0; --rows)
        table += "   " + numberBelow(random, 99) + ": " + hex(words) + ':' + hex(4) + ' ' +
                 QByteArray(words, '0') + ":0000 0A 00000000:00000000 00:00000000 00000000  " +
                 numberBelow(random, 70'000) + "        0 " + numberBelow(random, 99'999) + " 1\n";
    return table;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto *const bytes = reinterpret_cast<const char *>(data);
    checkMessages(bytes, size);
    checkTable({bytes, size}, false);
    checkTable({bytes, size}, true);
    return 0;
}
