#include "libexec/holders/DockerProxy.h"
#include "libexec/holders/RowOrder.h"
#include "libexec/proc/Descriptor.h"
#include "libexec/rows/DirectoryQuery.h"
#include "libexec/rows/SocketTable.h"
#include "tests/libexec/FakeProc.h"
#include "tests/libexec/SocketOn.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <algorithm>
#include <climits>

#include <fcntl.h>
#include <unistd.h>

using namespace tidewick::libexec;

TEST(Holders, dockerProxies)
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
    EXPECT_EQ(match({"p", "-proto", "tcp", "-host-ip", "::1", "-host-port", "8080"}, "::1"),
              ProxyMatch::exact);
    const std::vector<std::string_view> any{"p", "--proto=tcp", "--host-ip=0.0.0.0",
                                            "--host-port=8080"};
    EXPECT_EQ(match(any, "0.0.0.0"), ProxyMatch::exact);
    EXPECT_EQ(match(any, "::"), ProxyMatch::wildcard);
    EXPECT_EQ(match(any, "127.0.0.1"), ProxyMatch::none);
    EXPECT_EQ(match({"p", "-proto", "tcp", "-host-ip", "0.0.0.0", "-host-port", "8081"}, "0.0.0.0"),
              ProxyMatch::none);
    const auto last =
        forwardedSocket({"p", "-proto", "tcp", "-host-ip", "0.0.0.0", "-host-port", "65535"});
    EXPECT_TRUE(last && last->port == 65535);
    EXPECT_EQ(
        match({"p", "-proto", "tcp", "-host-ip", "0.0.0.0", "-host-port", "73616"}, "0.0.0.0"),
        ProxyMatch::none)
        << "65,536 too many";
    EXPECT_EQ(match({"p", "-proto", "udp", "-host-ip", "0.0.0.0", "-host-port", "8080"}, "0.0.0.0"),
              ProxyMatch::none);
    EXPECT_EQ(match({"p", "-proto", "tcp", "-host-ip", "x", "-host-port", "8080"}, "0.0.0.0"),
              ProxyMatch::none);
    EXPECT_EQ(match({"p", "-proto", "tcp", "-host-ip", "::", "-host-port"}, "::"),
              ProxyMatch::none);
}

namespace
{

/// The names of the holders, in the order of their rows.
std::vector<std::string> sorted(SocketHolders found, const std::vector<ListeningSocket> &sockets,
                                uint32_t viewer, const char *place = "/proc")
{
    const Descriptor proc(openDirectory(AT_FDCWD, place));
    sortRows(found, sockets, proc.value(), viewer);
    std::vector<std::string> names;
    for (const Holder &holder : found.holders)
        names.push_back(found.processes[holder.process].command);
    return names;
}

} // namespace

TEST(Holders, aProcessThatHasEndedIsNotTheOldest)
{
    SocketHolders found;
    found.processes = {{INT_MAX, 0, "ended"}, {getpid(), 0, "server"}};
    found.holders = {{0, 0, 3}, {1, 0, 3}};
    EXPECT_EQ(sorted(found, {socketOn("127.0.0.1", 80)}, 0),
              (std::vector<std::string>{"server", "ended"}));
}

TEST(Holders, onesOwnComeBeforeOthersAndSeenOnesBeforeInferred)
{
    SocketHolders found;
    // The first process is everybody's ancestor.
    found.processes = {{1, 0, "service"}, {1, 7, "stranger"}, {getpid(), 1000, "own"}};
    found.holders = {{0, 0, -1}, {1, 1, 3}, {2, 2, 3}};
    const std::vector<ListeningSocket> sockets{socketOn("::1", 80), socketOn("127.0.0.1", 80),
                                               socketOn("0.0.0.0", 80)};
    EXPECT_EQ(sorted(found, sockets, 1000),
              (std::vector<std::string>{"own", "stranger", "service"}));
    EXPECT_EQ(sorted(found, sockets, 0), (std::vector<std::string>{"stranger", "own", "service"}));
}

TEST(Holders, theOldestProcessComesFirst)
{
    const QTemporaryDir home;
    const std::string proc = home.path().toStdString();
    SocketHolders found;
    found.processes = {{5, 0, "child"}, {6, 0, "young"}, {9, 0, "parent"}};
    found.holders = {{0, 0, 3}, {1, 0, 3}, {2, 0, 3}};
    writeStat(proc, 5, 9, "child", 100);
    writeStat(proc, 6, 1, "young", 900);
    writeStat(proc, 9, 1, "parent", 100);
    EXPECT_EQ(sorted(found, {socketOn("127.0.0.1", 80)}, 0, proc.c_str()),
              (std::vector<std::string>{"parent", "child", "young"}));
}

TEST(Holders, theStandardInputIsADescriptorThatWasSeen)
{
    SocketHolders found;
    found.processes = {{INT_MAX - 1, 0, "inferred"}, {INT_MAX, 0, "seen"}};
    found.holders = {{0, 0, -1}, {1, 0, 0}};
    EXPECT_EQ(sorted(found, {socketOn("127.0.0.1", 80)}, 0),
              (std::vector<std::string>{"seen", "inferred"}));
}

TEST(Rows, lieUnderTheirHeadings)
{
    SocketHolders found;
    found.processes = {{7, 0, "go"}, {123456, 4000000000, "a server"}};
    found.holders = {{0, 0, 3}, {1, 1, 12345}, {1, 2, -1}};
    std::vector<ListeningSocket> sockets{socketOn("127.0.0.1", 80), socketOn("::", 8080),
                                         socketOn("0.0.0.0", 65535)};
    sockets[0].inode = 61;
    EXPECT_EQ(socketTable({{found.processes[0]}, {found.holders[0]}, {}}, sockets),
              "COMMAND PID USER   FD   TYPE DEVICE SIZE/OFF NODE NAME\n"
              "go        7 root    3u  IPv4     61      0t0  TCP 127.0.0.1:80 (LISTEN)\n");
    sockets[1].inode = 1234567890;
    EXPECT_EQ(
        socketTable(found, sockets),
        "COMMAND        PID       USER   FD   TYPE     DEVICE SIZE/OFF NODE NAME\n"
        "go               7       root    3u  IPv4         61      0t0  TCP 127.0.0.1:80 (LISTEN)\n"
        "a\\x20server 123456 4000000000 12345u  IPv6 1234567890      0t0  TCP *:8080 (LISTEN)\n"
        "a\\x20server 123456 4000000000  NOFD  IPv4          0      0t0  TCP *:65535 (LISTEN)\n");
    found.processes[1] = {8, 4242, "x"};
    EXPECT_EQ(socketTable({{found.processes[1]}, {{0, 0, 3}}, {}}, sockets),
              "COMMAND PID     USER   FD   TYPE DEVICE SIZE/OFF NODE NAME\n"
              "x         8     4242    3u  IPv4     61      0t0  TCP 127.0.0.1:80 (LISTEN)\n");
    EXPECT_EQ(socketTable({}, sockets), "");
}

TEST(Rows, aWorkingDirectoryIsAskedForInOneWay)
{
    const auto query = [](std::vector<std::string> words) {
        std::vector<char *> arguments(words.size());
        std::transform(words.begin(), words.end(), arguments.begin(),
                       [](std::string &word) { return word.data(); });
        return directoryQuery(int(arguments.size()), arguments.data());
    };
    const auto of = [&](const char *option, const char *pid) {
        return query({"lsof", option, pid, "-a", "-d", "cwd", "-F", "n"});
    };
    EXPECT_EQ(of("-p", "1"), 1);
    EXPECT_EQ(of("-p", "2147483647"), 2147483647);
    for (const char *const pid : {"0", "2147483648", "-1", "x", ""})
        EXPECT_EQ(of("-p", pid), std::nullopt) << pid;
    EXPECT_EQ(of("-c", "1"), std::nullopt);
    EXPECT_EQ(query({"lsof", "-p", "1", "-a", "-d", "txt", "-F", "n"}), std::nullopt);
    EXPECT_EQ(query({"lsof", "-p", "1"}), std::nullopt);
}
