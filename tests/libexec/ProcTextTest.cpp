#include "libexec/ProcText.h"
#include "libexec/Holders.h"
#include "libexec/ProcessCells.h"
#include "libexec/SocketDump.h"
#include "scan/SocketScan.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <clocale>

#include <arpa/inet.h>
#include <linux/netlink.h>
#include <unistd.h>

using namespace tidewick::tools;
using namespace std::string_view_literals;

namespace
{

ListeningSocket socketOn(const char *address, uint16_t port)
{
    ListeningSocket socket;
    socket.isIpv6 = std::string_view(address).find(':') != std::string_view::npos;
    socket.port = port;
    EXPECT_EQ(inet_pton(socket.isIpv6 ? AF_INET6 : AF_INET, address, socket.address), 1);
    return socket;
}

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

} // namespace

TEST(ProcText, numbersAreDigitsAndNothingElse)
{
    EXPECT_EQ(parseNumber("0"), 0U);
    EXPECT_EQ(parseNumber("18446744073709551615"), UINT64_MAX);
    for (const char *const text : {"", "+1", "-1", " 1", "1 ", "0x1", "18446744073709551616"})
        EXPECT_FALSE(parseNumber(text)) << text;
}

TEST(ProcText, statIsSplitAfterTheLastParenthesis)
{
    const auto stat =
        parseStat("77 (a) S 1 (\n b) Z 4242 7 7 0 -1 4194304 100 0 0 0 31 12 0 0 20 0 "
                  "1 0 5150 1000 1 18446744073709551615\n");
    ASSERT_TRUE(stat);
    EXPECT_EQ(stat->comm, "a) S 1 (\n b");
    EXPECT_EQ(stat->state, 'Z');
    EXPECT_EQ(stat->parent, 4242);
    EXPECT_EQ(stat->userTime, 31U);
    EXPECT_EQ(stat->systemTime, 12U);
    EXPECT_EQ(stat->startTime, 5150U);
}

TEST(ProcText, aStatThatIsNone)
{
    for (const char *const text : {"", "77", "77 (", ")(", "77 (a)", "77 (a) S", "77 (a) S x 1",
                                   "77 (a) SS 1 7 7 0 -1 4 1 0 0 0 3 1 0 0 20 0 1 0 5 1"})
        EXPECT_FALSE(parseStat(text)) << text;
}

TEST(ProcText, statusValues)
{
    constexpr std::string_view status = "Name:\tVmRSS:\nUid:\t1\t2\t3\t4\nVmRSS:\t  1234 kB\nX:\n";
    EXPECT_EQ(statusValue(status, "VmRSS"), "1234 kB");
    EXPECT_EQ(statusValue(status, "Uid"), "1\t2\t3\t4");
    EXPECT_EQ(statusValue(status, "X"), "");
    EXPECT_EQ(statusValue(status, "Vm"), std::nullopt);
}

TEST(ProcText, argumentsEndWithANul)
{
    using List = std::vector<std::string_view>;
    EXPECT_EQ(splitArguments(""sv), List());
    EXPECT_EQ(splitArguments("\0"sv), List{""});
    EXPECT_EQ(splitArguments("a\0\0b c\0"sv), (List{"a", "", "b c"}));
    EXPECT_EQ(splitArguments("title without end"sv), List{"title without end"});
}

TEST(ProcText, socketLinks)
{
    EXPECT_EQ(socketInode("socket:[4294967295]"), 4294967295U);
    for (const char *const text : {"", "socket:[", "socket:[]", "socket:[1", "socket:[1]x",
                                   "socket:[-1]", "/tmp/socket:[1]", "pipe:[1]"})
        EXPECT_EQ(socketInode(text), 0U) << text;
}

TEST(ProcText, theTableOfIpv4)
{
    auto first = socketOn("127.0.0.1", 8080);
    first.user = 1000;
    first.inode = 52341;
    auto second = socketOn("0.0.0.0", 22);
    second.inode = 777;
    EXPECT_EQ(parseTcpTable(tcpTable, false), (std::vector{first, second}));
    EXPECT_TRUE(parseTcpTable(tcpTable, true).empty());
}

TEST(ProcText, theTableOfIpv6)
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

TEST(ProcText, aTruncatedTableIsRead)
{
    for (size_t size = 0; size < tcpTable.size(); ++size)
        EXPECT_LE(parseTcpTable(tcpTable.substr(0, size), false).size(), 2U);
}

TEST(ProcText, hostileNetlinkMessagesAreRefused)
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

TEST(ProcText, aDumpThatTheKernelGaveUpIsNoEmptyOne)
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

TEST(ProcText, bothSourcesTellTheSame)
{
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
        if (*netlink == tables)
            return;
    }
    FAIL() << "they differ in each of 50 attempts";
}

TEST(ProcText, addresses)
{
    EXPECT_EQ(addressText(socketOn("0.0.0.0", 80)), "*:80");
    EXPECT_EQ(addressText(socketOn("::ffff:0.0.0.0", 80)), "*:80");
    EXPECT_EQ(addressText(socketOn("::", 80)), "*:80");
    EXPECT_EQ(addressText(socketOn("127.0.0.2", 1)), "127.0.0.2:1");
    EXPECT_EQ(addressText(socketOn("::1", 65535)), "[::1]:65535");
    EXPECT_EQ(addressText(socketOn("::ffff:127.0.0.1", 80)), "127.0.0.1:80");
    EXPECT_EQ(addressText(socketOn("fe80::1", 80)), "[fe80::1]:80");
}

TEST(ProcText, noByteOfAWordEndsIt)
{
    for (int byte = 0; byte < 256; ++byte) {
        const std::string escaped = escapeWord(std::string(1, char(byte)));
        EXPECT_FALSE(escaped.empty());
        EXPECT_TRUE(std::all_of(escaped.begin(), escaped.end(),
                                [](char c) { return c > 0x20 && c < 0x7f; }));
        EXPECT_EQ(escaped.size(), byte > 0x20 && byte < 0x7f && byte != '\\' ? 1U : 4U);
    }
    EXPECT_EQ(escapeWord("node 1 root"), "node\\x201\\x20root");
    EXPECT_EQ(escapeWord("a\\x20\n\xff"), "a\\x5cx20\\x0a\\xff");
}

TEST(ProcText, spellingsOfOneProgram)
{
    const std::pair<const char *, const char *> spellings[] = {{"node", "node"},
                                                               {"nodejs", "node"},
                                                               {"node-22", "node"},
                                                               {"node-20.11", "node"},
                                                               {"node.exe", "node"},
                                                               {".ruby-wrapped", "ruby"},
                                                               {".nodejs-wrapped", "node"},
                                                               {"bunx", "bun"},
                                                               {"mariadbd", "mysqld"},
                                                               {"node-", "node-"},
                                                               {"node-gyp", "node-gyp"},
                                                               {"node-22a", "node-22a"},
                                                               {"-wrapped", "-wrapped"},
                                                               {".-wrapped", ".-wrapped"},
                                                               {".exe", ".exe"},
                                                               {"Python.EXE", "Python"},
                                                               {"", ""}};
    for (const auto &[spelling, name] : spellings)
        EXPECT_EQ(foldName(spelling), name) << spelling;
}

TEST(ProcText, theKnownNamesAreThoseThatAreKept)
{
    for (const char *const name : {"node",
                                   "Node",
                                   "nodemon",
                                   "node-MainThread",
                                   "python3.11",
                                   "Python",
                                   "ruby3.1",
                                   "php-fpm",
                                   "postgres",
                                   "postgresql",
                                   "mysqld",
                                   "mysqld_safe",
                                   "mongod",
                                   "mongodb",
                                   "redis-server",
                                   "redis-check-rdb",
                                   "docker-proxy",
                                   "com.docker.backend",
                                   "deno",
                                   "bun",
                                   "bundle",
                                   "java",
                                   "dotnet",
                                   "go",
                                   "Google",
                                   "gopls",
                                   "nginx",
                                   "sh",
                                   "",
                                   "DOTNET.exe",
                                   "\235ocker"}) {
        const tidewick::PortInfo record(1, QStringLiteral("1"),
                                        QString::fromStdString(escapeWord(name)),
                                        QStringLiteral("root"), QStringLiteral("localhost"));
        EXPECT_EQ(isKnownName(name), isDevelopmentProcess(record)) << name;
    }
}

TEST(ProcText, programsByTheirExecutable)
{
    using List = std::vector<std::string_view>;
    EXPECT_EQ(programName("/usr/bin/python3.11", false, {}), "python3.11");
    EXPECT_EQ(programName("/opt/a (deleted)/node (deleted)", false, {}), "node");
    EXPECT_EQ(programName("/opt/node (deleted)", true, {}), "node (deleted)");
    EXPECT_EQ(programName("/memfd:a/b (deleted)", false, {}), "a/b");
    EXPECT_EQ(programName("/usr/lib/ld-linux-x86-64.so.2", false, List{"ld", "/opt/bin/node", "x"}),
              "node");
    EXPECT_EQ(programName("/lib/ld-2.31.so", false,
                          List{"ld", "--library-path", "/a/b", "--inhibit-cache", "/bin/php"}),
              "php");
    EXPECT_EQ(programName("/lib/ld-2.31.so", false, List{"ld", "--library-path"}), "ld-2.31.so");
    EXPECT_EQ(programName("/usr/bin/ld-tool", false, List{"ld", "node"}), "ld-tool");
}

TEST(ProcText, programsByWhatTheyCallThemselves)
{
    using List = std::vector<std::string_view>;
    EXPECT_EQ(hiddenProgramName(List{"/usr/bin/redis-server 127.0.0.1:6379"}, "x"), "redis-server");
    EXPECT_EQ(hiddenProgramName(List{"nginx: master process"}, "x"), "nginx");
    EXPECT_EQ(hiddenProgramName(List{"/usr/sbin/mariadbd"}, "x"), "mysqld");
    EXPECT_EQ(hiddenProgramName({}, "mongod"), "mongod");
    EXPECT_EQ(hiddenProgramName(List{""}, "mongod"), "mongod");
    EXPECT_EQ(hiddenProgramName(List{"/ x"}, "mongod"), "mongod");
}

TEST(ProcText, dockerProxies)
{
    const auto match = [](const std::vector<std::string_view> &arguments, const char *address) {
        const auto asked = forwardedSocket(arguments);
        return asked ? matchForwarder(*asked, socketOn(address, 8080)) : ProxyMatch::none;
    };
    const std::vector<std::string_view> exact{"/usr/bin/docker-proxy",
                                              "-proto",
                                              "tcp",
                                              "-host-ip",
                                              "127.0.0.1",
                                              "-host-port",
                                              "8080",
                                              "-container-ip",
                                              "172.17.0.2",
                                              "-container-port",
                                              "80"};
    EXPECT_EQ(match(exact, "127.0.0.1"), ProxyMatch::exact);
    EXPECT_EQ(match(exact, "0.0.0.0"), ProxyMatch::none);
    EXPECT_EQ(match(exact, "::"), ProxyMatch::none);
    const std::vector<std::string_view> any{"p", "--proto=tcp", "--host-ip=0.0.0.0",
                                            "--host-port=8080"};
    EXPECT_EQ(match(any, "0.0.0.0"), ProxyMatch::exact);
    EXPECT_EQ(match(any, "::"), ProxyMatch::wildcard);
    EXPECT_EQ(match(any, "127.0.0.1"), ProxyMatch::none);
    EXPECT_EQ(match({"p", "-proto", "udp", "-host-ip", "0.0.0.0", "-host-port", "8080"}, "0.0.0.0"),
              ProxyMatch::none);
    EXPECT_EQ(match({"p", "-proto", "tcp", "-host-ip", "x", "-host-port", "8080"}, "0.0.0.0"),
              ProxyMatch::none);
    EXPECT_EQ(match({"p", "-proto", "tcp", "-host-ip", "::", "-host-port"}, "::"),
              ProxyMatch::none);
}

TEST(ProcText, aPortIsAWholeNumber)
{
    for (const char *const text : {"8080", "--port=8080", "0.0.0.0:8080", "x 8080.", "18080 8080",
                                   "[::]:8080/", "-p8080", "a.8080"})
        EXPECT_TRUE(portsIn(text)[8080]) << text;
    for (const char *const text :
         {"", "18080", "80801", "8 080", "1.8080", "8080.5", "08080", "808099999999999999999999"})
        EXPECT_FALSE(portsIn(text)[8080]) << text;
    PortSet all;
    for (const size_t port : {0U, 7U, 3000U, 65535U})
        all.set(port);
    EXPECT_EQ(portsIn("0 7,3000\0--x=65535 3000 65536 007 1.5"sv), all);
}

TEST(ProcText, aPortInAUrlIsAnothers)
{
    for (const char *const text :
         {"--upstream=http://localhost:8080", "http://[::1]:8080/", "postgres://u:p@db:8080/x",
          "http://a/8080", "http://a?port=8080", "a://b c://d:8080"})
        EXPECT_FALSE(portsIn(text)[8080]) << text;
    for (const std::string_view text :
         {"http://a\0008080"sv, "http://a 8080"sv, "--port=8080 http://a"sv, "//a:8080"sv,
          "a:/b:8080"sv, "localhost:8080"sv})
        EXPECT_TRUE(portsIn(text)[8080]) << text;
}

// NOLINTBEGIN(concurrency-mt-unsafe): this program has one thread
TEST(ProcText, textsAsPsPrintsThem)
{
    ASSERT_NE(setlocale(LC_CTYPE, "C"), nullptr);
    EXPECT_EQ(escapeText("a\x01\x7f\n\xc3\xa9"), "a...??");
    if (setlocale(LC_CTYPE, "C.UTF-8") == nullptr)
        GTEST_SKIP() << "there is no locale with UTF-8";
    EXPECT_EQ(escapeText("a\x01\x7f\xc3\xa9"), "a??\xc3\xa9");
    EXPECT_EQ(escapeText("\xff\x01\xc3\xa9"), "?.??");
    EXPECT_EQ(escapeText("\xc3 \xc3\xa9\xe4"), "? \xc3\xa9?");
    EXPECT_EQ(escapeText("\xe1\xc3\x80\xc2\x85"), "?\xc3\x80?");
    setlocale(LC_CTYPE, "C");
    EXPECT_EQ(joinArguments("a\0\0b\nc\0\0"sv), "a  b c");
    EXPECT_EQ(joinArguments("\0\0"sv), "?");
}
// NOLINTEND(concurrency-mt-unsafe)

TEST(ProcText, cellsOfNumbers)
{
    const auto percent = [](uint64_t ticks, double seconds) {
        ProcessStat stat;
        stat.userTime = ticks;
        return percentage(stat, seconds, 100);
    };
    EXPECT_EQ(percent(0, 0), " 0.0");
    EXPECT_EQ(percent(1259, 100), "12.5");
    EXPECT_EQ(percent(9999, 100), "99.9");
    EXPECT_EQ(percent(10000, 100), " 100");
    EXPECT_EQ(percent(123456, 100), "1234");
    EXPECT_EQ(residentCell("VmHWM:\t 9 kB\nVmRSS:\t     988 kB\n"), "  988");
    EXPECT_EQ(residentCell("VmRSS:\t 1234567 kB\n"), "1234567");
    EXPECT_EQ(residentCell(""), "    0");
    ProcessStat stat;
    stat.startTime = 5150;
    EXPECT_EQ(lifeTime(stat, "1000.25 7.00\n", 100), 948.75);
    EXPECT_EQ(lifeTime(stat, "", 100), 0);
    EXPECT_EQ(paddedNumber(UINT64_MAX, 1, ' '), "18446744073709551615");
    EXPECT_EQ(elapsedText(5), "      00:05");
    EXPECT_EQ(elapsedText(7265), "   02:01:05");
    EXPECT_EQ(elapsedText(266465), " 3-02:01:05");
    EXPECT_EQ(elapsedText(86400UL * 1234), "1234-00:00:00");
}

TEST(Holders, aProcessThatHasEndedIsNotTheOldest)
{
    const std::vector<ListeningSocket> sockets{socketOn("127.0.0.1", 80)};
    Scan scan;
    scan.processes = {{INT_MAX, 0, "ended"}, {getpid(), 0, "server"}};
    scan.holders = {{0, 0, 3}, {1, 0, 3}};
    sortByAncestry(scan, sockets);
    EXPECT_EQ(scan.processes[scan.holders[0].process].command, "server");
}
