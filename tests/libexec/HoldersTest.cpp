#include "libexec/holders/DockerProxy.h"
#include "libexec/holders/NamedPorts.h"
#include "libexec/holders/RowOrder.h"
#include "tests/libexec/SocketOn.h"

#include <gtest/gtest.h>

#include <climits>

#include <unistd.h>

using namespace tidewick::libexec;
using namespace std::string_view_literals;

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

TEST(Holders, aPortIsAWholeNumber)
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

TEST(Holders, aPortInAUrlIsAnothers)
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

TEST(Holders, aProcessThatHasEndedIsNotTheOldest)
{
    const std::vector<ListeningSocket> sockets{socketOn("127.0.0.1", 80)};
    SocketHolders found;
    found.processes = {{INT_MAX, 0, "ended"}, {getpid(), 0, "server"}};
    found.holders = {{0, 0, 3}, {1, 0, 3}};
    sortByAncestry(found, sockets);
    EXPECT_EQ(found.processes[found.holders[0].process].command, "server");
}
