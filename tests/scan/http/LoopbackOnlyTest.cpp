// Runs in a network of its own, whose only way out is a link that the tests listen on: first the
// client alone, then the whole program.

#include "scan/http/CurlHttpClient.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/ServerProgram.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <QTemporaryFile>

#include <algorithm>

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <unistd.h>

using tidewick::CurlHttpClient;
using tidewick::HttpOutcome;
using tidewick::HttpResponse;
using tidewick::TlsEvidence;

namespace
{

bool writeFile(const char *path, const QByteArray &text)
{
    QFile file(QString::fromLatin1(path));
    return file.open(QFile::WriteOnly | QFile::Unbuffered) && file.write(text) == text.size();
}

/// Moves this process to a network and a view of the files of its own. It must have one thread.
bool leaveForAnotherNetwork()
{
    const QByteArray user = QByteArray::number(getuid());
    const QByteArray group = QByteArray::number(getgid());
    if (unshare(CLONE_NEWNET | CLONE_NEWNS) != 0) {
        if (unshare(CLONE_NEWUSER | CLONE_NEWNET | CLONE_NEWNS) != 0)
            return false;
        writeFile("/proc/self/setgroups", "deny");
        if (!writeFile("/proc/self/uid_map", "0 " + user + " 1") ||
            !writeFile("/proc/self/gid_map", "0 " + group + " 1"))
            return false;
    }
    return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

bool runIp(const char *arguments)
{
    return QProcess::execute(QStringLiteral("ip"),
                             QString::fromLatin1(arguments).split(QLatin1Char(' '))) == 0;
}

/// One link, "out", as the default way to everywhere; without ARP, so that it takes every packet.
bool setUpLinks()
{
    return runIp("link set lo up") && runIp("link add out type veth peer name elsewhere") &&
           runIp("link set out arp off") && runIp("address add 192.0.2.2/24 dev out") &&
           runIp("address add 2001:db8::2/64 dev out nodad") && runIp("link set out up") &&
           runIp("link set elsewhere up") && runIp("route add default dev out") &&
           runIp("-6 route add default dev out");
}

/// Sees what goes out by the link: all of IPv4, and the TCP and UDP of IPv6.
class Watch
{
public:
    Watch() : m_socket(socket(AF_PACKET, SOCK_DGRAM | SOCK_NONBLOCK, htons(ETH_P_ALL)))
    {
        sockaddr_ll link{};
        link.sll_family = AF_PACKET;
        link.sll_protocol = htons(ETH_P_ALL);
        link.sll_ifindex = int(if_nametoindex("out"));
        if (bind(m_socket, reinterpret_cast<sockaddr *>(&link), sizeof link) != 0)
            ADD_FAILURE() << "the link cannot be watched";
    }
    ~Watch() { close(m_socket); }
    Q_DISABLE_COPY_MOVE(Watch)

    int packetCount() const
    {
        int count = 0;
        unsigned char packet[64];
        sockaddr_ll link{};
        socklen_t size = sizeof link;
        while (recvfrom(m_socket, packet, sizeof packet, 0, reinterpret_cast<sockaddr *>(&link),
                        &size) > 0) {
            const bool isTransport = packet[6] == IPPROTO_TCP || packet[6] == IPPROTO_UDP;
            if (ntohs(link.sll_protocol) == ETH_P_IP ||
                (ntohs(link.sll_protocol) == ETH_P_IPV6 && isTransport))
                ++count;
        }
        return count;
    }

private:
    int m_socket;
};

/// Why the tests cannot run; empty where they can.
std::string obstacle;

class LoopbackOnly : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_FALSE(findProgram(QStringLiteral("ip")).isEmpty())
            << "ip is missing; scripts/setup installs it";
        if (!obstacle.empty())
            GTEST_SKIP() << obstacle;
    }
};

void connectTo(const char *address)
{
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    sockaddr_in target{};
    target.sin_family = AF_INET;
    target.sin_port = htons(80);
    inet_pton(AF_INET, address, &target.sin_addr);
    static_cast<void>(connect(descriptor, reinterpret_cast<sockaddr *>(&target), sizeof target));
    close(descriptor);
}

HttpOutcome get(const QString &url)
{
    TlsEvidence evidence;
    return CurlHttpClient().send({url, "GET", {}}, evidence, {});
}

QByteArray bodyOf(const HttpOutcome &outcome)
{
    const auto *response = std::get_if<HttpResponse>(&outcome);
    return response == nullptr ? QByteArray("no response") : response->body;
}

/// The sockets of this network that wait for somebody: TCP listeners, and any UDP.
int socketCount()
{
    int count = 0;
    for (const char *table : {"tcp", "tcp6", "udp", "udp6"}) {
        QFile file(QStringLiteral("/proc/self/net/") + QLatin1String(table));
        if (!file.open(QFile::ReadOnly))
            ADD_FAILURE() << table << " cannot be read";
        constexpr int header = 1;
        const auto lines = file.readAll().split('\n').mid(header);
        count += int(std::count_if(lines.begin(), lines.end(), [table](const QByteArray &line) {
            const QByteArray state = line.simplified().split(' ').value(3);
            return table[0] == 'u' ? !state.isEmpty() : state == "0A";
        }));
    }
    return count;
}

/// Sends everyone elsewhere, and writes a line each time.
constexpr const char *redirectingServer = R"(
import http.server
class Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        print('asked', flush=True)
        self.send_response(302)
        self.send_header('Location', 'http://192.0.2.1/')
        self.end_headers()
    def log_message(self, *ignored):
        pass
http.server.HTTPServer(('127.0.0.1', 0), Handler).serve_forever()
)";

/// No desktop and no bus, and a proxy elsewhere.
QProcessEnvironment bareEnvironment(const QString &home)
{
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("HOME"), home);
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), home);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    for (const char *bus : {"DBUS_SESSION_BUS_ADDRESS", "DBUS_SYSTEM_BUS_ADDRESS"})
        environment.insert(QString::fromLatin1(bus), QStringLiteral("unix:path=/nonexistent"));
    for (const char *proxy : {"http_proxy", "https_proxy", "all_proxy"})
        environment.insert(QString::fromLatin1(proxy), QStringLiteral("http://192.0.2.1:3128"));
    return environment;
}

} // namespace

TEST_F(LoopbackOnly, theWatchSeesAConnectionElsewhere)
{
    const Watch watch;
    connectTo("192.0.2.1");
    connectTo("198.51.100.1");
    EXPECT_EQ(watch.packetCount(), 2);
}

TEST_F(LoopbackOnly, noPacketLeavesOnARedirect)
{
    const Watch watch;
    for (const char *location :
         {"http://192.0.2.1/", "http://198.51.100.1/", "http://[2001:db8::1]/",
          "http://example.org/", "http://localhost.example.org/", "http://sub.localhost/",
          "http://127.0.0.1@192.0.2.1/", "http://[::ffff:192.0.2.1]/", "http://3221225985/",
          "//192.0.2.1/", "https://192.0.2.1/", "ftp://192.0.2.1/",
          "file://192.0.2.1/etc/passwd"}) {
        const LoopbackServer server(
            answering(QByteArray("HTTP/1.1 302 Go\r\nContent-Length: 5\r\nLocation: ") + location +
                      "\r\n\r\nfirst"));
        EXPECT_EQ(bodyOf(get(server.url())), "first") << location;
        EXPECT_EQ(watch.packetCount(), 0) << location;
    }
}

TEST_F(LoopbackOnly, noPacketLeavesForAUrlElsewhere)
{
    const Watch watch;
    for (const char *url : {"http://192.0.2.1/", "http://[2001:db8::1]/", "http://example.org/"})
        get(QString::fromLatin1(url));
    EXPECT_EQ(watch.packetCount(), 0);
}

TEST_F(LoopbackOnly, noPacketLeavesForLocalhostWhateverTheHostsFileSays)
{
    QTemporaryFile hosts;
    ASSERT_TRUE(hosts.open());
    hosts.write("192.0.2.1 localhost\n2001:db8::1 localhost\n");
    hosts.close();
    const QByteArray path = QFile::encodeName(hosts.fileName());
    ASSERT_EQ(mount(path.constData(), "/etc/hosts", nullptr, MS_BIND, nullptr), 0);
    const Watch watch;
    const LoopbackServer server(answering("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nhere"));
    const QString url = QStringLiteral("http://localhost:%1/").arg(server.port());
    EXPECT_EQ(bodyOf(get(url)), "here");
    EXPECT_EQ(watch.packetCount(), 0);
    umount("/etc/hosts");
}

TEST_F(LoopbackOnly, noPacketLeavesTheProgramWhileItScans)
{
    const Watch watch;
    const QTemporaryDir home;
    QProcess server;
    server.start(QStringLiteral("/usr/bin/python3"),
                 {QStringLiteral("-c"), QString::fromLatin1(redirectingServer)});
    QProcess program;
    program.setProcessEnvironment(bareEnvironment(home.path()));
    program.start(QStringLiteral(TIDEWICK), {});
    QByteArray asked;
    const bool scannedTwice = waitUntil(
        [&] {
            asked += server.readAllStandardOutput();
            return asked.count('\n') >= 2;
        },
        40'000);
    EXPECT_TRUE(scannedTwice) << program.readAllStandardError().toStdString();
    EXPECT_EQ(watch.packetCount(), 0);
    EXPECT_EQ(socketCount(), 1) << "the server's";
    for (QProcess *process : {&program, &server}) {
        process->terminate();
        EXPECT_TRUE(process->waitForFinished());
    }
}

int main(int argc, char *argv[])
{
    if (!leaveForAnotherNetwork())
        obstacle = "the kernel allows no network of its own";
    else if (!setUpLinks())
        obstacle = "the kernel allows no link in a network of its own";
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
