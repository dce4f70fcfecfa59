#include "libexec/sockets/SocketDump.h"

#include "libexec/proc/Descriptor.h"
#include "libexec/proc/ProcFiles.h"
#include "libexec/sockets/DiagMessages.h"
#include "libexec/sockets/TcpTable.h"

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace tidewick::libexec
{
namespace
{

DiagEnd dumpFamily(int netlink, uint8_t family, std::vector<ListeningSocket> &sockets)
{
    struct
    {
        nlmsghdr header;
        inet_diag_req_v2 request;
    } message{};
    message.header.nlmsg_len = sizeof message;
    message.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    message.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    message.request.sdiag_family = family;
    message.request.sdiag_protocol = IPPROTO_TCP;
    message.request.idiag_states = 1U << unsigned(TCP_LISTEN);
    sockaddr_nl kernel{};
    kernel.nl_family = AF_NETLINK;
    if (sendto(netlink, &message, sizeof message, 0, reinterpret_cast<const sockaddr *>(&kernel),
               sizeof kernel) < 0)
        return DiagEnd::error;

    std::array<char, 32768> buffer;
    for (;;) {
        const ssize_t size = recv(netlink, buffer.data(), buffer.size(), MSG_TRUNC);
        if (size < 0 && errno == EINTR)
            continue;
        if (size <= 0 || size_t(size) > buffer.size())
            return DiagEnd::error;
        const DiagEnd end = parseDiagMessages(buffer.data(), size_t(size), sockets);
        if (end != DiagEnd::more)
            return end;
    }
}

} // namespace

std::optional<std::vector<ListeningSocket>> socketsFromNetlink()
{
    constexpr int attempts = 3;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const Descriptor netlink(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
        std::vector<ListeningSocket> sockets;
        if (!netlink.isOpen())
            return std::nullopt;
        DiagEnd end = dumpFamily(netlink.value(), AF_INET, sockets);
        if (end == DiagEnd::done)
            end = dumpFamily(netlink.value(), AF_INET6, sockets);
        if (end == DiagEnd::done)
            return sockets;
        if (end == DiagEnd::error)
            return std::nullopt;
    }
    return std::nullopt;
}

std::vector<ListeningSocket> socketsFromTables()
{
    constexpr size_t limit = 64U << 20U;
    std::string text;
    std::vector<ListeningSocket> sockets;
    if (readFile(AT_FDCWD, "/proc/net/tcp", text, limit))
        sockets = parseTcpTable(text, false);
    if (readFile(AT_FDCWD, "/proc/net/tcp6", text, limit)) {
        const auto ipv6 = parseTcpTable(text, true);
        sockets.insert(sockets.end(), ipv6.begin(), ipv6.end());
    }
    return sockets;
}

std::vector<ListeningSocket> listeningSockets()
{
    auto sockets = socketsFromNetlink();
    return sockets ? *std::move(sockets) : socketsFromTables();
}

} // namespace tidewick::libexec
