#include "libexec/proc/Descriptor.h"
#include "libexec/sockets/DiagMessages.h"
#include "libexec/sockets/SocketDump.h"
#include "libexec/sockets/TcpTable.h"
#include "tests/libexec/SocketOn.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>

using namespace tidewick::libexec;

namespace
{

constexpr std::string_view tcpTable =
    "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout "
    "inode\n"
    "   0: 0100007F:1F90 00000000:0000 0A 00000000:00000000 00:00000000 00000000  1000        0 "
    "52341 1 0000000000000000 100 0 0 10 0\n"
    "   1: garbage\n"
    "   2: 00000000:0016 00000000:0000 0A 00000000:00000000 00:00000000 00000000     0        0 "
    "777 1 0000000000000000 100 0 0 10 0\n"
    "   3: 0100007F:9C40 0100007F:1F90 01 00000000:00000000 00:00000000 00000000  1000        0 "
    "9 1 0000000000000000 20 4 30 10 -1\n"
    "   4: 00000000:0017 00000000:0000 0A 00000000:00000000 00:00000000 00000000     0        0 "
    "778 1 0000000000000000 100 0 0 10 0\n";

/// A message about a listening socket, with what follows it, and the length that it tells.
std::string diagMessage(const inet_diag_msg &socket, const std::string &attributes = {},
                        uint32_t missing = 0)
{
    nlmsghdr header{};
    header.nlmsg_len = uint32_t(sizeof header + sizeof socket + attributes.size() - missing);
    header.nlmsg_type = TCPDIAG_GETSOCK;
    std::string bytes(sizeof header + sizeof socket, '\0');
    memcpy(bytes.data(), &header, sizeof header);
    memcpy(bytes.data() + sizeof header, &socket, sizeof socket);
    return (bytes + attributes).substr(0, header.nlmsg_len);
}

std::string attribute(uint16_t type, uint16_t length, uint64_t value)
{
    const rtattr head{length, type};
    std::string bytes(sizeof head + sizeof value, '\0');
    memcpy(bytes.data(), &head, sizeof head);
    memcpy(bytes.data() + sizeof head, &value, sizeof value);
    return bytes;
}

} // namespace

TEST(Sockets, whatADumpTellsOfASocket)
{
    inet_diag_msg told{};
    told.idiag_family = AF_INET;
    told.idiag_state = 10; // TCP_LISTEN
    told.id.idiag_sport = htons(8080);
    told.id.idiag_src[0] = htonl(INADDR_LOOPBACK);
    told.id.idiag_src[1] = ~0U; // an IPv4 address ends before
    told.idiag_uid = 33;
    told.idiag_inode = 61;
    ListeningSocket socket = socketOn("127.0.0.1", 8080);
    socket.user = 33;
    socket.inode = 61;
    const auto read = [](const std::string &message) {
        std::vector<ListeningSocket> sockets;
        parseDiagMessages(message.data(), message.size(), sockets);
        return sockets;
    };
    EXPECT_EQ(read(diagMessage(told)), std::vector{socket});
    EXPECT_TRUE(read(diagMessage(told, "", 1)).empty());

    constexpr uint16_t whole = sizeof(rtattr) + sizeof(uint64_t);
    const std::string other = attribute(INET_DIAG_MARK, whole, 5);
    const std::string empty =
        attribute(INET_DIAG_MARK, sizeof(rtattr), 0).substr(0, sizeof(rtattr));
    const std::string cgroup = attribute(INET_DIAG_CGROUP_ID, whole, 77);
    const auto cgroupOf = [&](const std::string &attributes) {
        const auto sockets = read(diagMessage(told, attributes));
        return sockets.size() == 1 ? sockets[0].cgroup : 1;
    };
    EXPECT_EQ(cgroupOf(cgroup), 77U);
    EXPECT_EQ(cgroupOf(other + empty + cgroup), 77U);
    EXPECT_EQ(cgroupOf(cgroup + other), 77U);
    EXPECT_EQ(cgroupOf(other), 0U);
    EXPECT_EQ(cgroupOf(attribute(INET_DIAG_CGROUP_ID, whole - 1, 77)), 0U) << "too short";
    EXPECT_EQ(cgroupOf(attribute(INET_DIAG_CGROUP_ID, whole + 1, 77)), 0U) << "cut off";
    EXPECT_EQ(cgroupOf(attribute(INET_DIAG_MARK, 3, 5) + cgroup), 0U) << "shorter than its head";
}

TEST(Sockets, socketLinks)
{
    EXPECT_EQ(socketInode("socket:[4294967295]"), 4294967295U);
    for (const char *const text :
         {"", "socket:[", "socket:[]", "socket:[1", "socket:[1]x", "socket:[-1]", "/tmp/socket:[1]",
          "pipe:[1]", "socket:[12", "Socket:[1]"})
        EXPECT_EQ(socketInode(text), 0U) << text;
}

TEST(Sockets, theTableOfIpv4)
{
    auto first = socketOn("127.0.0.1", 8080);
    first.user = 1000;
    first.inode = 52341;
    auto second = socketOn("0.0.0.0", 22);
    second.inode = 777;
    EXPECT_EQ(parseTcpTable(tcpTable, false), (std::vector{first, second}));
    EXPECT_TRUE(parseTcpTable(tcpTable, true).empty());
}

TEST(Sockets, theTableOfIpv6)
{
    auto socket = socketOn("::1", 5432);
    socket.user = 33;
    socket.inode = 61;
    EXPECT_EQ(parseTcpTable("header\n   0: 00000000000000000000000001000000:1538 "
                            "00000000000000000000000000000000:0000 0A 00000000:00000000 "
                            "00:00000000 00000000    33        0 61 1 0 100 0 0 10 0",
                            true),
              std::vector{socket});
}

TEST(Sockets, aTruncatedTableIsRead)
{
    for (size_t size = 0; size < tcpTable.size(); ++size)
        EXPECT_LE(parseTcpTable(tcpTable.substr(0, size), false).size(), 2U);
}

TEST(Sockets, hostileNetlinkMessagesAreRefused)
{
    std::vector<ListeningSocket> sockets;
    EXPECT_EQ(parseDiagMessages("", 0, sockets), DiagEnd::more);
    std::string bytes;
    for (unsigned seed = 1; bytes.size() < 400; seed = seed * 1103515245 + 12345)
        bytes += char(seed >> 16);
    for (unsigned length = 0; length < 300; ++length) {
        for (size_t size = 0; size < bytes.size(); size += 3) {
            std::string message = bytes.substr(0, size);
            // A plausible length and type in front lead on to what follows.
            if (size >= 8)
                message.replace(0, 8, {char(length), char(length >> 8), 0, 0, 20, 0, 0, 0});
            parseDiagMessages(message.data(), message.size(), sockets);
        }
    }
}

TEST(Sockets, aDumpThatTheKernelGaveUpIsNoEmptyOne)
{
    struct
    {
        nlmsghdr header{};
        int result = 0;
    } end;
    end.header.nlmsg_len = sizeof end;
    end.header.nlmsg_type = NLMSG_DONE;
    std::vector<ListeningSocket> sockets;
    const auto *const bytes = reinterpret_cast<const char *>(&end);
    EXPECT_EQ(parseDiagMessages(bytes, sizeof end, sockets), DiagEnd::done);
    end.result = -ENOENT;
    EXPECT_EQ(parseDiagMessages(bytes, sizeof end, sockets), DiagEnd::error);
}

TEST(Sockets, howADumpEnds)
{
    const auto ending = [](uint16_t type, uint16_t flags) {
        nlmsghdr header{};
        header.nlmsg_len = sizeof header;
        header.nlmsg_type = type;
        header.nlmsg_flags = flags;
        std::vector<ListeningSocket> sockets;
        return parseDiagMessages(reinterpret_cast<const char *>(&header), sizeof header, sockets);
    };
    EXPECT_EQ(ending(NLMSG_DONE, NLM_F_MULTI), DiagEnd::done);
    EXPECT_EQ(ending(NLMSG_DONE, NLM_F_MULTI | NLM_F_DUMP_INTR), DiagEnd::interrupted);
    EXPECT_EQ(ending(NLMSG_ERROR, 0), DiagEnd::error);
}

TEST(Sockets, rowsThatAreNoSocketsAreLeftOut)
{
    const auto rows = [](const std::string &address, const std::string &state,
                         const std::string &user, const std::string &inode) {
        return parseTcpTable("header\n   0: " + address + " 00000000:0000 " + state +
                                 " 00000000:00000000 00:00000000 00000000 " + user + " 0 " + inode +
                                 " 1\n",
                             false)
            .size();
    };
    EXPECT_EQ(rows("0100007F:1F90", "0A", "0", "7"), 1U);
    EXPECT_EQ(rows("0100007F:1F90", "0A", "4294967295", "7"), 1U);
    for (const char *const address :
         {"0100007G:1F90", "0100007f:1F90", "0100007F:1F9x", "0100007F-1F90", "0100007F:1F9", "x"})
        EXPECT_EQ(rows(address, "0A", "0", "7"), 0U) << address;
    EXPECT_EQ(rows("0100007F:1F90", "00000000A", "0", "7"), 0U);
    EXPECT_EQ(rows("0100007F:1F90", "0A", "4294967296", "7"), 0U);
    EXPECT_EQ(rows("0100007F:1F90", "0A", "x", "7"), 0U);
    EXPECT_EQ(rows("0100007F:1F90", "0A", "0", "x"), 0U);
}

TEST(Sockets, areEqualInAllThatIsKnownOfThem)
{
    const ListeningSocket socket = socketOn("127.0.0.1", 80);
    EXPECT_EQ(socket, socketOn("127.0.0.1", 80));
    EXPECT_FALSE(socket == socketOn("127.0.0.2", 80));
    EXPECT_FALSE(socket == socketOn("127.0.0.1", 81));
    ListeningSocket other = socket;
    other.isIpv6 = true;
    EXPECT_FALSE(socket == other);
    other = socket;
    other.user = 5;
    EXPECT_FALSE(socket == other);
    other = socket;
    other.cgroup = 5;
    EXPECT_FALSE(socket == other);
    other = socket;
    other.inode = 5;
    EXPECT_FALSE(socket == other);
}

TEST(Sockets, bothSourcesTellTheSame)
{
    const Descriptor ipv4(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(listen(ipv4.value(), 1), 0);
    const Descriptor ipv6(::socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0));
    listen(ipv6.value(), 1); // some machines have no IPv6
    auto netlink = socketsFromNetlink();
    if (!netlink)
        GTEST_SKIP() << "sock_diag is refused here";
    const auto order = [](const ListeningSocket &a, const ListeningSocket &b) {
        return a.inode < b.inode;
    };
    for (int attempt = 0; attempt < 50; ++attempt) {
        netlink = socketsFromNetlink();
        auto tables = socketsFromTables();
        for (ListeningSocket &socket : *netlink)
            socket.cgroup = 0;
        std::sort(netlink->begin(), netlink->end(), order);
        std::sort(tables.begin(), tables.end(), order);
        // Another program may have begun to listen in between.
        if (!tables.empty() && *netlink == tables)
            return;
    }
    FAIL() << "they differ in each of 50 attempts";
}

TEST(Sockets, addresses)
{
    EXPECT_EQ(addressText(socketOn("0.0.0.0", 80)), "*:80");
    EXPECT_EQ(addressText(socketOn("::ffff:0.0.0.0", 80)), "*:80");
    EXPECT_EQ(addressText(socketOn("::", 80)), "*:80");
    EXPECT_EQ(addressText(socketOn("127.0.0.2", 1)), "127.0.0.2:1");
    EXPECT_EQ(addressText(socketOn("::1", 65535)), "[::1]:65535");
    EXPECT_EQ(addressText(socketOn("::ffff:127.0.0.1", 80)), "127.0.0.1:80");
    EXPECT_EQ(addressText(socketOn("fe80::1", 80)), "[fe80::1]:80");
}
