#include "scan/http/CurlHttpClient.h"
#include "scan/http/BrokenPipeGuard.h"
#include "tests/scan/http/HttpExchange.h"
#include "tests/support/Duration.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <ctime>
#include <future>
#include <memory>
#include <new>
#include <thread>
#include <unistd.h>
#include <vector>

using tidewick::BrokenPipeGuard;
using tidewick::CurlHttpClient;
using tidewick::HttpError;
using tidewick::HttpOutcome;
using tidewick::HttpResponse;
using tidewick::TlsEvidence;
using namespace std::chrono_literals;

namespace
{

/// Sets variables of the environment and puts them back.
class EnvironmentGuard
{
public:
    void set(const char *name, const QByteArray &value)
    {
        m_before.emplace_back(name, qEnvironmentVariableIsSet(name) ? std::optional(qgetenv(name))
                                                                    : std::nullopt);
        qputenv(name, value);
    }
    EnvironmentGuard() = default;
    ~EnvironmentGuard()
    {
        for (const auto &[name, value] : m_before) {
            if (value)
                qputenv(name, *value);
            else
                qunsetenv(name);
        }
    }
    Q_DISABLE_COPY_MOVE(EnvironmentGuard)

private:
    std::vector<std::pair<const char *, std::optional<QByteArray>>> m_before;
};

} // namespace

// What is asked

TEST(CurlHttpClient, sendsNoMoreThanItMust)
{
    RequestLog log;
    const LoopbackServer server(logging(log, sending(ok("hi"))));
    send(server.url(), "GET", "Tidewick/1.0");
    ASSERT_EQ(log.heads().size(), 1U);
    EXPECT_EQ(log.heads()[0], "GET / HTTP/1.1\r\nHost: 127.0.0.1:" + number(server.port()) +
                                  "\r\nUser-Agent: Tidewick/1.0\r\nAccept: */*\r\n\r\n");
}

TEST(CurlHttpClient, sendsNoUserAgentUnlessGiven)
{
    RequestLog log;
    const LoopbackServer server(logging(log, sending(ok({}))));
    send(server.url(), "HEAD");
    ASSERT_EQ(log.heads().size(), 1U);
    EXPECT_EQ(log.heads()[0], "HEAD / HTTP/1.1\r\nHost: 127.0.0.1:" + number(server.port()) +
                                  "\r\nAccept: */*\r\n\r\n");
}

TEST(CurlHttpClient, sendsOptions)
{
    RequestLog log;
    const LoopbackServer server(logging(log, sending(ok({}))));
    EXPECT_EQ(responseOf(send(server.url(), "OPTIONS")).status, 200);
    ASSERT_EQ(log.heads().size(), 1U);
    EXPECT_TRUE(log.heads()[0].startsWith("OPTIONS / HTTP/1.1\r\n"));
}

TEST(CurlHttpClient, goesThroughNoProxyWhateverTheEnvironmentSays)
{
    const LoopbackServer proxy(answering(ok("proxy")));
    const LoopbackServer server(answering(ok("server")));
    EnvironmentGuard environment;
    for (const char *name :
         {"http_proxy", "HTTP_PROXY", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
        environment.set(name, proxy.url().toLatin1());
    for (const char *name : {"no_proxy", "NO_PROXY"})
        environment.set(name, "");
    EXPECT_EQ(responseOf(send(server.url())).body, "server");
    EXPECT_EQ(proxy.connectionCount(), 0);
}

TEST(CurlHttpClient, sendsNoCredentialsOfTheUsersHome)
{
    const QTemporaryDir home;
    QFile netrc(home.filePath(QStringLiteral(".netrc")));
    ASSERT_TRUE(netrc.open(QFile::WriteOnly));
    netrc.write("machine 127.0.0.1 login alice password secret\ndefault login a password b\n");
    netrc.close();
    EnvironmentGuard environment;
    environment.set("HOME", home.path().toLocal8Bit());
    RequestLog log;
    const LoopbackServer server(
        logging(log, sending("HTTP/1.1 401 No\r\nWWW-Authenticate: Basic realm=x\r\n"
                             "Content-Length: 0\r\n\r\n")));
    EXPECT_EQ(responseOf(send(server.url())).status, 401);
    ASSERT_EQ(log.heads().size(), 1U);
    EXPECT_FALSE(log.heads()[0].contains("Authorization"));
}

TEST(CurlHttpClient, sendsNoCredentialsOfTheUrl)
{
    RequestLog log;
    const LoopbackServer server(logging(log, sending(ok({}))));
    QString url = server.url();
    url.insert(url.indexOf(QLatin1String("//")) + 2, QStringLiteral("alice:secret@"));
    EXPECT_EQ(responseOf(send(url)).status, 200);
    ASSERT_EQ(log.heads().size(), 1U);
    EXPECT_FALSE(log.heads()[0].contains("Authorization"));
}

TEST(CurlHttpClient, sendsNoCookieBack)
{
    RequestLog log;
    const LoopbackServer server([&log](LoopbackConnection &connection) {
        log.add(connection.readHead());
        connection.send("HTTP/1.1 302 Go\r\nSet-Cookie: a=b\r\nLocation: /a\r\n\r\n");
    });
    send(server.url());
    ASSERT_GT(log.heads().size(), 1U);
    for (const QByteArray &head : log.heads())
        EXPECT_FALSE(head.contains("Cookie"));
}

TEST(CurlHttpClient, asksNoOtherMachineAndNoOtherProtocol)
{
    for (const char *url : {"http://192.0.2.1/", "http://example.invalid/", "http://[2001:db8::1]/",
                            "http://0.0.0.0/", "ftp://127.0.0.1/", "file:///etc/passwd",
                            "http://sub.localhost/", "nonsense://", "http://127.0.0.1:99999/", ""})
        EXPECT_EQ(errorOf(send(QString::fromLatin1(url))), HttpError::unsupportedUrl) << url;
}

// The answer

TEST(CurlHttpClient, bringsStatusHeadersAndBody)
{
    const LoopbackServer server(
        answering("HTTP/1.1 404 Gone fishing\r\nSERVER: nginx/1.25\r\nX-A: 1\r\nx-a: 2\r\n"
                  "Content-Length: 5\r\n\r\nhello"));
    const HttpResponse response = responseOf(send(server.url()));
    EXPECT_EQ(response.status, 404);
    EXPECT_EQ(response.headers.value("Server"), QStringLiteral("nginx/1.25"));
    EXPECT_EQ(response.headers.value("X-A"), QStringLiteral("1, 2"));
    EXPECT_EQ(response.headers.value("X-B"), std::nullopt);
    EXPECT_EQ(response.body, "hello");
}

TEST(CurlHttpClient, takesAnHttp10AnswerThatEndsWithTheConnection)
{
    const LoopbackServer server(answering("HTTP/1.0 200 OK\r\nServer: old\r\n\r\npage"));
    const HttpResponse response = responseOf(send(server.url()));
    EXPECT_EQ(response.headers.value("Server"), QStringLiteral("old"));
    EXPECT_EQ(response.body, "page");
}

TEST(CurlHttpClient, readsNoBodyAfterHead)
{
    for (const char *body : {"", "some of it"}) {
        const LoopbackServer server(
            stallingAfter(QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 500\r\n\r\n") + body));
        const HttpResponse response = responseOf(send(server.url(), "HEAD"));
        EXPECT_EQ(response.status, 200);
        EXPECT_EQ(response.body, "");
    }
}

TEST(CurlHttpClient, takesLineFeedsForLineEnds)
{
    const LoopbackServer server(stallingAfter("HTTP/1.1 200 OK\nServer: x\nContent-Length: 9\n\n"));
    EXPECT_TRUE(takesLessThan(afterASecond, [&server] {
        const HttpResponse response = responseOf(send(server.url(), "HEAD"));
        EXPECT_EQ(response.status, 200);
        EXPECT_EQ(response.headers.value("Server"), QStringLiteral("x"));
    }));
}

TEST(CurlHttpClient, skipsInterimResponsesWithTheirHeaders)
{
    const LoopbackServer server(
        answering("HTTP/1.1 100 Continue\r\nServer: interim\r\n\r\n"
                  "HTTP/1.1 103 Early Hints\r\nLink: </a.css>\r\nX-Powered-By: interim\r\n\r\n" +
                  ok("page", "Server: final\r\n")));
    const HttpResponse response = responseOf(send(server.url()));
    EXPECT_EQ(response.status, 200);
    EXPECT_EQ(response.headers.value("Server"), QStringLiteral("final"));
    EXPECT_EQ(response.headers.value("X-Powered-By"), std::nullopt);
    EXPECT_EQ(response.headers.value("Link"), std::nullopt);
    EXPECT_EQ(response.body, "page");
}

TEST(CurlHttpClient, takesASwitchOfProtocolsForAnAnswer)
{
    const LoopbackServer server(
        answering("HTTP/1.1 101 Switching\r\nUpgrade: x\r\nServer: ws\r\n\r\n"));
    const HttpResponse response = responseOf(send(server.url()));
    EXPECT_EQ(response.status, 101);
    EXPECT_EQ(response.headers.value("Server"), QStringLiteral("ws"));
}

TEST(CurlHttpClient, doesNotTakeTrailersForHeaders)
{
    const LoopbackServer server(answering("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                          "4\r\npage\r\n0\r\nServer: trailer\r\n\r\n"));
    const HttpResponse response = responseOf(send(server.url()));
    EXPECT_EQ(response.body, "page");
    EXPECT_EQ(response.headers.value("Server"), std::nullopt);
}

TEST(CurlHttpClient, survivesHeadersThatAreNoText)
{
    const LoopbackServer server(
        answering(ok({}, "Server: \xff\xfe<img src=x>\x1b[2J\xe2\x80\xae\r\n\xf0\x28: x\r\n")));
    const HttpResponse response = responseOf(send(server.url()));
    const QString text = response.headers.value("Server").value_or(QString());
    EXPECT_TRUE(text.contains(QStringLiteral("<img src=x>")));
    for (const QChar character : text)
        EXPECT_NE(character.category(), QChar::Other_Control);
}

TEST(CurlHttpClient, leavesABodyAsItCame)
{
    const QByteArray body("\x1f\x8b\x08\0\xff", 5);
    const LoopbackServer server(answering(ok(body, "Content-Encoding: gzip\r\n")));
    EXPECT_EQ(responseOf(send(server.url())).body, body);
}

TEST(CurlHttpClient, knowsA9999ByteBodyFromALongerOne)
{
    for (const qsizetype size : {9'999, 10'000, 10'001, 100'000}) {
        const LoopbackServer server(answering(ok(QByteArray(size, 'x'))));
        EXPECT_EQ(responseOf(send(server.url())).body.size(), std::min<qsizetype>(size, 10'000));
    }
}

TEST(CurlHttpClient, answersOnTheIpv6Loopback)
{
    const LoopbackServer server(answering(ok("six")), LoopbackServer::Address::ipv6);
    EXPECT_EQ(responseOf(send(server.url())).body, "six");
}

TEST(CurlHttpClient, findsLocalhostOnEitherLoopback)
{
    for (const auto address : {LoopbackServer::Address::ipv4, LoopbackServer::Address::ipv6}) {
        const LoopbackServer server(answering(ok("here")), address);
        const QString url = QStringLiteral("http://localhost:%1").arg(server.port());
        EXPECT_EQ(responseOf(send(url)).body, "here");
    }
}

// No answer

TEST(CurlHttpClient, isRefusedWhereNobodyListens)
{
    QString url;
    {
        const LoopbackServer gone(sending({}));
        url = gone.url();
    }
    EXPECT_EQ(errorOf(send(url)), HttpError::cannotConnect);
}

struct TroubleRow
{
    const char *name;
    QByteArray bytes;
    int code;
};

class Trouble : public testing::TestWithParam<TroubleRow>
{
};

TEST_P(Trouble, isAnErrorThatIsNotTls)
{
    const LoopbackServer server(answering(GetParam().bytes));
    EXPECT_EQ(errorOf(send(server.url())), GetParam().code);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Trouble,
    testing::Values(
        TroubleRow{"emptyReply", {}, HttpError::connectionLost},
        TroubleRow{"noHttp", "-ERR unknown command\r\n", nonHttp},
        TroubleRow{"binary",
                   QByteArray("\x5b\0\0\0\x0a"
                              "8.0.36\0",
                              12),
                   nonHttp},
        TroubleRow{"http09Page", "<html>hello</html>", nonHttp},
        TroubleRow{"cutHead", "HTTP/1.1 200 OK\r\nServer: x\r\n", HttpError::connectionLost},
        TroubleRow{"cutStatusLine", "HTTP/1.1 2", HttpError::connectionLost},
        TroubleRow{"unknownVersion", "HTTP/7.1 200 OK\r\n\r\n", HttpError::badServerResponse},
        TroubleRow{"interimAlone", "HTTP/1.1 100 Continue\r\n\r\n", HttpError::connectionLost},
        TroubleRow{"cutBody", "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nfour",
                   HttpError::connectionLost},
        TroubleRow{"chunkedGarbage",
                   "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\ngarbage\r\n",
                   HttpError::connectionLost},
        TroubleRow{"chunkOfMinusOne",
                   "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n-1\r\nx\r\n",
                   HttpError::connectionLost},
        TroubleRow{"hugeChunk",
                   "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nfffffffffffffffffff\r\nx",
                   HttpError::connectionLost},
        TroubleRow{"nullInAHeader", QByteArray("HTTP/1.1 200 OK\r\nServer: a\0b\r\n\r\n", 31),
                   HttpError::badServerResponse}),
    rowName);

TEST(CurlHttpClient, readsNoHttpAfterAnInterimResponse)
{
    const LoopbackServer server(answering("HTTP/1.1 100 Continue\r\n\r\n-ERR"));
    EXPECT_TRUE(isFaultAfterAnInterimResponse(errorOf(send(server.url()))));
}

TEST(CurlHttpClient, isResetAtOnce)
{
    const LoopbackServer server([](LoopbackConnection &connection) { connection.resetAtEnd(); });
    // The reset may come before the client has seen that it is connected.
    const auto error = errorOf(send(server.url()));
    EXPECT_TRUE(error == HttpError::connectionLost || error == HttpError::cannotConnect) << error;
}

TEST(CurlHttpClient, isResetAfterTheRequest)
{
    const LoopbackServer server([](LoopbackConnection &connection) {
        connection.readHead();
        connection.resetAtEnd();
    });
    EXPECT_EQ(errorOf(send(server.url())), HttpError::connectionLost);
}

TEST(CurlHttpClient, takesAHalfClosedConnectionForALostOne)
{
    const LoopbackServer server([](LoopbackConnection &connection) {
        connection.stopSending();
        connection.hold();
    });
    EXPECT_EQ(errorOf(send(server.url())), HttpError::connectionLost);
}

TEST(CurlHttpClient, readsTheAnswerOfAServerThatHearsNoMore)
{
    const LoopbackServer server([](LoopbackConnection &connection) {
        connection.readHead();
        connection.stopReceiving();
        connection.send(ok("still here"));
        connection.stopSending();
        connection.hold();
    });
    EXPECT_EQ(responseOf(send(server.url())).body, "still here");
}

TEST(BrokenPipeGuard, keepsAWriteToNobodyFromEndingTheProgram)
{
    const auto before = std::signal(SIGPIPE, SIG_DFL);
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    close(ends[0]);
    {
        const BrokenPipeGuard guard;
        EXPECT_EQ(write(ends[1], "x", 1), -1);
        EXPECT_EQ(errno, EPIPE);
    }
    close(ends[1]);
    std::signal(SIGPIPE, before);
}

TEST(BrokenPipeGuard, keepsBackNoOtherSignal)
{
    alignas(BrokenPipeGuard) std::array<std::byte, sizeof(BrokenPipeGuard)> memory;
    memory.fill(std::byte{0xff}); // it must not count on zeros
    auto *const guard = new (memory.data()) BrokenPipeGuard;
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGPIPE), 1);
    EXPECT_EQ(sigismember(&mask, SIGTERM), 0);
    std::destroy_at(guard);
}

TEST(CurlHttpClient, leavesTheSignalsOfItsThreadAsTheyWere)
{
    const LoopbackServer server([](LoopbackConnection &connection) { connection.resetAtEnd(); });
    for (int i = 0; i < 50; ++i)
        send(server.url());
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    EXPECT_EQ(sigismember(&mask, SIGPIPE), 0);
}

// Servers that take their time

struct SlowRow
{
    const char *name;
    LoopbackServer::Behaviour behaviour;
};

class SlowServer : public testing::TestWithParam<SlowRow>
{
};

TEST_P(SlowServer, costsOneSecond)
{
    const LoopbackServer server(GetParam().behaviour);
    EXPECT_TRUE(takesLessThan(1500ms, [&server] {
        QElapsedTimer timer;
        timer.start();
        EXPECT_EQ(errorOf(send(server.url())), HttpError::timedOut);
        EXPECT_GE(timer.elapsed(), 990);
    }));
}

/// One byte of `bytes` every 100 ms.
LoopbackServer::Behaviour dripping(const QByteArray &start, const QByteArray &bytes)
{
    return [start, bytes](LoopbackConnection &connection) {
        connection.readHead();
        connection.send(start);
        for (const char byte : bytes) {
            if (!connection.pause(100) || !connection.send(QByteArray(1, byte)))
                return;
        }
        connection.hold();
    };
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SlowServer,
    testing::Values(
        SlowRow{"silent",
                [](LoopbackConnection &connection) {
                    connection.hold();
                }},
        SlowRow{"drippingItsHead", dripping({}, ok("page", "Server: slow\r\n"))},
        SlowRow{"drippingItsBody",
                dripping("HTTP/1.1 200 OK\r\nContent-Length: 99\r\n\r\n", QByteArray(99, 'x'))},
        SlowRow{"drippingInterimResponses",
                [](LoopbackConnection &connection) {
                    while (connection.send("HTTP/1.1 102 Wait\r\n\r\n") && connection.pause(50)) {
                    }
                }},
        SlowRow{"stallingInItsHead", stallingAfter("HTTP/1.1 200 OK\r\nServer: x\r\n")},
        SlowRow{"stallingBeforeItsBody",
                stallingAfter("HTTP/1.1 200 OK\r\nContent-Length: 1000000000\r\n\r\n")},
        SlowRow{"stallingInItsBody",
                stallingAfter("HTTP/1.1 200 OK\r\nContent-Length: 20000\r\n\r\nhalf a page")},
        SlowRow{"stallingWithinAChunk",
                stallingAfter("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nff\r\nxx")}),
    rowName);

TEST(CurlHttpClient, waitsWithoutProcessorTime)
{
    const LoopbackServer server([](LoopbackConnection &connection) { connection.hold(); });
    const auto processorTime = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    };
    send(server.url());
    const auto before = processorTime();
    EXPECT_EQ(errorOf(send(server.url())), HttpError::timedOut);
    EXPECT_LT(processorTime() - before, 50ms);
}

TEST(CurlHttpClient, keepsNoDescriptor)
{
    const auto descriptors = [] {
        const LoopbackServer server(answering(ok("page")));
        for (int i = 0; i < 10; ++i)
            send(server.url());
        return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::System | QDir::Files).size();
    };
    const auto before = descriptors();
    EXPECT_LT(descriptors() - before, 10);
}

TEST(CurlHttpClient, waitsForManySilentServersAtOnce)
{
    const LoopbackServer server([](LoopbackConnection &connection) { connection.hold(); });
    EXPECT_TRUE(takesLessThan(5s, [&server] {
        std::vector<std::future<HttpOutcome>> requests(10);
        for (auto &request : requests)
            request = std::async(std::launch::async, [&] { return send(server.url()); });
        for (auto &request : requests)
            EXPECT_EQ(errorOf(request.get()), HttpError::timedOut);
    }));
}

// One client for many requests

TEST(CurlHttpClient, opensAConnectionForEachRequest)
{
    const LoopbackServer server([](LoopbackConnection &connection) {
        while (!connection.readHead().isEmpty())
            connection.send(ok("page"));
    });
    const CurlHttpClient client;
    for (int i = 0; i < 3; ++i) {
        TlsEvidence evidence;
        EXPECT_EQ(responseOf(client.send({server.url(), "GET", {}}, evidence, {})).body, "page");
    }
    EXPECT_EQ(server.connectionCount(), 3);
}

TEST(CurlHttpClient, answersRequestsOneByOneAndAtATime)
{
    const CurlHttpClient client;
    for (const int atATime : {1, 1, 3, 2, 4}) {
        std::atomic<int> connections = 0;
        const LoopbackServer server([&](LoopbackConnection &connection) {
            connection.readHead();
            ++connections;
            while (connections < atATime && connection.pause(1)) {
            }
            connection.send(ok("page"));
        });
        std::vector<std::future<HttpOutcome>> requests(static_cast<size_t>(atATime));
        for (auto &request : requests)
            request = std::async(std::launch::async, [&] {
                TlsEvidence evidence;
                return client.send({server.url(), "GET", {}}, evidence, {});
            });
        for (auto &request : requests)
            EXPECT_EQ(responseOf(request.get()).body, "page") << atATime << " at a time";
    }
}

// Servers without end

struct FloodRow
{
    const char *name;
    QByteArray start;
    QByteArray more;
    /// 0: an answer whose body is full.
    int code;
};

class Flood : public testing::TestWithParam<FloodRow>
{
};

qint64 residentBytes()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QFile::ReadOnly))
        return 0;
    return statm.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

TEST_P(Flood, endsSoonAndCostsLittleMemory)
{
    const LoopbackServer server(flooding(GetParam().start, GetParam().more));
    const auto ask = [&server] {
        const HttpOutcome outcome = send(server.url());
        EXPECT_EQ(errorOf(outcome), GetParam().code);
        if (GetParam().code == 0) {
            EXPECT_EQ(responseOf(outcome).body.size(), HttpResponse::bodyLimit);
        }
    };
    EXPECT_TRUE(takesLessThan(afterASecond, ask));
    const qint64 before = residentBytes();
    for (int i = 0; i < 10; ++i)
        ask();
    const qint64 growth = residentBytes() - before;
    RecordProperty("bytes", int(growth));
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LT(growth, 5'000'000);
#endif
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Flood,
    testing::Values(FloodRow{"endlessHeaders", "HTTP/1.1 200 OK\r\n",
                             QByteArray("X-Filling: 0123456789abcdef\r\n").repeated(2000),
                             HttpError::headersTooLong},
                    FloodRow{"endlessTinyHeaders", "HTTP/1.1 200 OK\r\n",
                             QByteArray("a:\r\n").repeated(20000), HttpError::headersTooLong},
                    FloodRow{"endlessInterimResponses",
                             {},
                             QByteArray("HTTP/1.1 100 Continue\r\n\r\n").repeated(2000),
                             HttpError::headersTooLong},
                    FloodRow{"endlessBody", "HTTP/1.1 200 OK\r\n\r\n", QByteArray(65536, 'x'), 0},
                    FloodRow{"oneGigabyte", "HTTP/1.1 200 OK\r\nContent-Length: 1073741824\r\n\r\n",
                             QByteArray(65536, 'x'), 0},
                    FloodRow{"moreThanFits64Bits",
                             "HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999\r\n\r\n",
                             QByteArray(65536, 'x'), 0},
                    FloodRow{"endlessChunks",
                             "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n",
                             QByteArray("1\r\nx\r\n").repeated(10000), 0},
                    FloodRow{"endlessPageOfNoHttp", {}, QByteArray(65536, 'x'), nonHttp}),
    rowName);

TEST(CurlHttpClient, leavesAnEndlessHeaderLine)
{
    const LoopbackServer server(flooding("HTTP/1.1 200 OK\r\nX-Long: ", QByteArray(65536, 'x')));
    EXPECT_TRUE(takesLessThan(afterASecond, [&server] {
        const int code = errorOf(send(server.url()));
        EXPECT_NE(code, 0);
        EXPECT_NE(code, HttpError::secureConnectionFailed);
        EXPECT_NE(code, HttpError::certificateUntrusted);
    }));
}

TEST(CurlHttpClient, takesHeadersUpToItsLimit)
{
    const QByteArray lines = QByteArray("X: " + QByteArray(1019, 'x') + "\r\n"); // 1 KiB
    const QByteArray page("page");
    const auto withMore = [&](qsizetype bytes) {
        return ok(page, lines.repeated(255) + "X: " + QByteArray(bytes, 'x') + "\r\n");
    };
    const qsizetype fitting = 262144 - (withMore(0).size() - page.size());
    const LoopbackServer under(answering(withMore(fitting)));
    EXPECT_EQ(responseOf(send(under.url())).body, page);
    const LoopbackServer over(answering(withMore(fitting + 1)));
    EXPECT_EQ(errorOf(send(over.url())), HttpError::headersTooLong);
}

// A stop

TEST(CurlHttpClient, returnsAtOnceWhenStoppedBefore)
{
    const LoopbackServer server(answering(ok("page")));
    std::stop_source source;
    source.request_stop();
    EXPECT_EQ(errorOf(send(server.url(), "GET", {}, source.get_token())), HttpError::cancelled);
    EXPECT_EQ(server.connectionCount(), 0);
}

class Stop : public testing::TestWithParam<SlowRow>
{
};

TEST_P(Stop, endsTheRequestAtOnce)
{
    const LoopbackServer server(GetParam().behaviour);
    EXPECT_TRUE(takesLessThan(700ms, [&server] {
        std::stop_source source;
        auto request = std::async(
            std::launch::async, [&] { return send(server.url(), "GET", {}, source.get_token()); });
        // Until it waits for the server alone. libcurl has a timer of its own in the first 200 ms.
        std::this_thread::sleep_for(300ms);
        source.request_stop();
        EXPECT_EQ(errorOf(request.get()), HttpError::cancelled);
    }));
}

INSTANTIATE_TEST_SUITE_P(
    During, Stop,
    testing::Values(SlowRow{"silence",
                            [](LoopbackConnection &connection) {
                                connection.hold();
                            }},
                    SlowRow{"aSlowHead", dripping({}, ok("page"))},
                    SlowRow{"aSlowBody",
                            stallingAfter("HTTP/1.1 200 OK\r\nContent-Length: 20000\r\n\r\nhalf")},
                    SlowRow{"redirects",
                            [](LoopbackConnection &connection) {
                                const QByteArray head = connection.readHead();
                                if (!head.startsWith("GET / "))
                                    connection.hold();
                                connection.send(redirectTo("/a"));
                            }}),
    rowName);
