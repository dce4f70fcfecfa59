// Another person's listener may stand beside a server of ours, on its port of another address.

#include "scan/http/ListenerOwner.h"
#include "scan/http/CurlHttpClient.h"
#include "scan/http/HttpProbe.h"
#include "tests/scan/http/HttpExchange.h"
#include "tests/support/Duration.h"
#include "tests/support/TestText.h"
#include "tests/support/system/Users.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using tidewick::HttpError;
using tidewick::isAnotherPerson;
using tidewick::ProbeResult;

namespace
{

constexpr uid_t otherPerson = 54399;
constexpr uid_t service = 983;

enum class Place { ipv4, anyIpv4, ipv6, anyIpv6, both, device };

int listenAt(Place place, int port)
{
    const bool isIpv6 = place == Place::ipv6 || place == Place::anyIpv6 || place == Place::both;
    const int listener = socket(isIpv6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int only = place != Place::both;
    sockaddr_in ipv4{};
    ipv4.sin_family = AF_INET;
    ipv4.sin_port = htons(uint16_t(port));
    ipv4.sin_addr.s_addr = htonl(place == Place::ipv4 ? INADDR_LOOPBACK : INADDR_ANY);
    sockaddr_in6 ipv6{};
    ipv6.sin6_family = AF_INET6;
    ipv6.sin6_port = htons(uint16_t(port));
    ipv6.sin6_addr = place == Place::ipv6 ? in6addr_loopback : in6addr_any;
    if (isIpv6)
        setsockopt(listener, IPPROTO_IPV6, IPV6_V6ONLY, &only, sizeof only);
    if (place == Place::device)
        setsockopt(listener, SOL_SOCKET, SO_BINDTODEVICE, "lo", 3);
    const int again = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &again, sizeof again);
    const bool isBound =
        isIpv6 ? bind(listener, reinterpret_cast<const sockaddr *>(&ipv6), sizeof ipv6) == 0
               : bind(listener, reinterpret_cast<const sockaddr *>(&ipv4), sizeof ipv4) == 0;
    return isBound && listen(listener, 16) == 0 ? listener : -1;
}

/// A process of another user with one listener. It answers each connection with `answer`, or with
/// nothing for as long as it lives.
class OthersServer
{
public:
    OthersServer(uid_t user, Place place, int port, const QByteArray &answer = {})
    {
        std::array<int, 2> ends{};
        if (pipe(ends.data()) != 0)
            qFatal("no pipe");
        m_child = fork();
        if (m_child == 0)
            serve(user, place, port, answer, ends[1]);
        close(ends[1]);
        char byte = 0;
        m_listens = read(ends[0], &byte, 1) == 1;
        close(ends[0]);
    }
    ~OthersServer()
    {
        // Only root may end it, and an ordinary user may stand in for root here.
        const uid_t user = geteuid();
        if (seteuid(0) != 0 || kill(m_child, SIGKILL) != 0 || seteuid(user) != 0)
            qFatal("the other user's process cannot be ended");
        waitpid(m_child, nullptr, 0);
    }
    Q_DISABLE_COPY_MOVE(OthersServer)

    bool listens() const { return m_listens; }

private:
    [[noreturn]] static void serve(uid_t user, Place place, int port, const QByteArray &answer,
                                   int started)
    {
        // What this process puts aside for the length of a test.
        if (setresuid(0, 0, 0) != 0 || setresgid(user, user, user) != 0 ||
            setresuid(user, user, user) != 0)
            _exit(1);
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        const int listener = listenAt(place, port);
        if (listener < 0 || write(started, "", 1) != 1)
            _exit(1);
        for (;;) {
            const int connection = accept(listener, nullptr, nullptr);
            std::array<char, 4096> head;
            if (answer.isEmpty())
                continue;
            if (read(connection, head.data(), head.size()) > 0)
                ::send(connection, answer.constData(), size_t(answer.size()), MSG_NOSIGNAL);
            close(connection);
        }
    }

    pid_t m_child = -1;
    bool m_listens = false;
};

ProbeResult probe(int port)
{
    return tidewick::probeHttpService(port, tidewick::CurlHttpClient(), {});
}

/// A port that nobody uses.
int freePort()
{
    const LoopbackServer server(sending({}));
    return server.port();
}

class OthersListener : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!isRealRoot())
            GTEST_SKIP() << "only root can start another user's process";
    }
};

} // namespace

TEST(ListenerOwner, onlyOtherPersonsAreNotAsked)
{
    EXPECT_TRUE(isAnotherPerson(1001, 1000));
    EXPECT_TRUE(isAnotherPerson(1000, 1001));
    EXPECT_FALSE(isAnotherPerson(1000, 1000));
    EXPECT_FALSE(isAnotherPerson(999, 1000));
    EXPECT_FALSE(isAnotherPerson(0, 1000));
    EXPECT_FALSE(isAnotherPerson(1000, 0));
}

TEST_F(OthersListener, thatIsSilentOnAnotherAddressHoldsUpNoProbe)
{
    const OrdinaryUser user;
    const LoopbackServer own(sending(ok("hi", "Server: own\r\n")), LoopbackServer::Address::ipv6);
    const OthersServer silent(otherPerson, Place::ipv4, own.port());
    ASSERT_TRUE(silent.listens());
    // An attempt at the silent one would take a second.
    EXPECT_TRUE(takesLessThan(afterASecond, [&own] {
        EXPECT_EQ(probe(own.port()), (ProbeResult{true, 200, QStringLiteral("own")}));
    }));
}

TEST_F(OthersListener, doesNotAnswerForOnesOwnServer)
{
    const OrdinaryUser user;
    const LoopbackServer own(answering("-ERR no HTTP\r\n"));
    const OthersServer other(otherPerson, Place::ipv6, own.port(), ok("hi", "Server: other\r\n"));
    ASSERT_TRUE(other.listens());
    EXPECT_EQ(probe(own.port()), (ProbeResult{false, std::nullopt, std::nullopt}));
}

TEST_F(OthersListener, isNotAskedWhateverAddressItListensOn)
{
    const OrdinaryUser user;
    const int port = freePort();
    for (const Place place :
         {Place::ipv4, Place::anyIpv4, Place::ipv6, Place::anyIpv6, Place::both, Place::device}) {
        const OthersServer other(otherPerson, place, port, ok("hi"));
        ASSERT_TRUE(other.listens()) << int(place);
        for (const char *host :
             {"localhost", "127.0.0.1", "127.0.0.2", "[::1]", "[::ffff:127.0.0.1]"})
            EXPECT_EQ(
                errorOf(send(QStringLiteral("http://%1:%2").arg(QLatin1String(host)).arg(port))),
                HttpError::cannotConnect)
                << host << ' ' << int(place);
    }
}

TEST_F(OthersListener, isAskedWhereItIsAServicesOrRoots)
{
    const OrdinaryUser user;
    const int port = freePort();
    for (const uid_t owner : {uid_t(0), service}) {
        const OthersServer other(owner, Place::ipv4, port, ok("hi"));
        ASSERT_TRUE(other.listens()) << owner;
        EXPECT_EQ(responseOf(send(QStringLiteral("http://127.0.0.1:%1").arg(port))).status, 200)
            << owner;
    }
}

TEST_F(OthersListener, isAskedByRoot)
{
    const int port = freePort();
    const OthersServer other(otherPerson, Place::ipv4, port, ok("hi"));
    ASSERT_TRUE(other.listens());
    EXPECT_EQ(responseOf(send(QStringLiteral("http://127.0.0.1:%1").arg(port))).status, 200);
}
