// How a plain request finds out that its server speaks TLS, and what that costs the server.

#include "scan/http/CurlHttpClient.h"
#include "scan/http/HttpProbe.h"
#include "tests/scan/http/HttpExchange.h"
#include "tests/support/Duration.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/ProbeText.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>

#include <algorithm>
#include <future>

using tidewick::CurlHttpClient;
using tidewick::HttpError;
using tidewick::probeHttpService;
using tidewick::TlsEvidence;
using namespace std::chrono_literals;

namespace
{

const QByteArray alert("\x15\x03\x01\0\x02\x02\x46", 7);

auto helloCount(const RequestLog &log)
{
    const auto heads = log.heads();
    return std::count_if(heads.begin(), heads.end(), &isHello);
}

/// Of the requests that an attempt of the probe makes.
auto requestCount(const RequestLog &log)
{
    const auto heads = log.heads();
    return std::count_if(heads.begin(), heads.end(),
                         [](const QByteArray &head) { return head.contains("Host:"); });
}

/// Closes on the header "Host" and waits for the rest of a hello, as Redis does. A request without
/// headers is answered by `bytes`.
LoopbackServer::Behaviour likeRedis(RequestLog &log, const QByteArray &bytes)
{
    return [&log, bytes](LoopbackConnection &connection) {
        const QByteArray head = connection.readHead();
        log.add(head);
        if (head.contains("Host:"))
            return;
        if (!isHello(head))
            connection.send(bytes);
        connection.hold();
    };
}

/// Closes after a plain request, `milliseconds` later, and leaves a hello without an answer.
LoopbackServer::Behaviour deafToHellos(RequestLog &log, int milliseconds)
{
    return [&log, milliseconds](LoopbackConnection &connection) {
        const QByteArray head = connection.readHead();
        log.add(head);
        if (isHello(head))
            connection.hold();
        else
            connection.pause(milliseconds);
    };
}

} // namespace

struct StartRow
{
    const char *name;
    /// What answers a plain request and a hello.
    QByteArray bytes;
    int code;
    int hellos;
};

class StartOfAnAnswer : public testing::TestWithParam<StartRow>
{
};

TEST_P(StartOfAnAnswer, tellsWhetherAHelloIsNeeded)
{
    for (const char *method : {"GET", "HEAD", "OPTIONS"}) {
        RequestLog log;
        const LoopbackServer server(logging(log, sending(GetParam().bytes)));
        EXPECT_EQ(errorOf(send(server.url(), method)), GetParam().code) << method;
        EXPECT_EQ(helloCount(log), GetParam().hellos) << method;
        EXPECT_EQ(requestCount(log), 1) << method;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, StartOfAnAnswer,
    testing::Values(
        StartRow{"nothing", {}, HttpError::connectionLost, 1},
        StartRow{"line", "-ERR wrong number of arguments\r\n", nonHttp, 0},
        StartRow{"mysql",
                 QByteArray("\x5b\0\0\0\x0a"
                            "8.0.36\0",
                            12),
                 nonHttp, 0},
        StartRow{"page", "<html>hello</html>", nonHttp, 0}, StartRow{"newline", "\n", nonHttp, 0},
        StartRow{"cutHead", "HTTP/1.1 200 OK\r\nServer: x\r\n", HttpError::connectionLost, 0},
        StartRow{"interimResponse", "HTTP/1.1 100 Go\r\n\r\n", HttpError::connectionLost, 0},
        StartRow{"unknownVersion", "HTTP/7.1 200 OK\r\n\r\n", HttpError::badServerResponse, 0},
        StartRow{"alert", alert, HttpError::secureConnectionFailed, 0},
        StartRow{"alertAndMore", alert + "more", HttpError::secureConnectionFailed, 0},
        StartRow{"newestVersion", QByteArray("\x15\x03\x04\0\x02", 5),
                 HttpError::secureConnectionFailed, 0},
        StartRow{"handshake", QByteArray("\x16\x03\x03\0\x02", 5),
                 HttpError::secureConnectionFailed, 0},
        StartRow{"data", QByteArray("\x17\x03\x03\0\x02", 5), HttpError::secureConnectionFailed, 0},
        StartRow{"changeOfCiphers", QByteArray("\x14\x03\x03\0\x01", 5),
                 HttpError::secureConnectionFailed, 0},
        StartRow{"oldestVersion", QByteArray("\x15\x03\0\0\x02", 5),
                 HttpError::secureConnectionFailed, 0},
        StartRow{"startAlone", "\x15\x03\x03", HttpError::secureConnectionFailed, 0},
        StartRow{"typeBelow", QByteArray("\x13\x03\x03\0\x02", 5), nonHttp, 0},
        StartRow{"typeAbove", QByteArray("\x18\x03\x03\0\x02", 5), nonHttp, 0},
        StartRow{"versionBelow", QByteArray("\x15\x02\x03\0\x02", 5), nonHttp, 0},
        StartRow{"majorVersionAbove", QByteArray("\x15\x04\x03\0\x02", 5), nonHttp, 0},
        StartRow{"versionAbove", QByteArray("\x15\x03\x05\0\x02", 5), nonHttp, 0},
        StartRow{"cutAlert", "\x15\x03", nonHttp, 0}),
    rowName);

TEST(TlsEvidence, isNotSeenInAnAlertAfterAHead)
{
    for (const char *method : {"GET", "HEAD", "OPTIONS"}) {
        RequestLog log;
        const LoopbackServer server(logging(log, sending("HTTP/1.1 100 Go\r\n\r\n" + alert)));
        EXPECT_TRUE(isFaultAfterAnInterimResponse(errorOf(send(server.url(), method)))) << method;
        EXPECT_EQ(helloCount(log), 0) << method;
        EXPECT_EQ(requestCount(log), 1) << method;
    }
}

TEST(TlsEvidence, isSeenInBytesThatComeOneByOne)
{
    const LoopbackServer server([](LoopbackConnection &connection) {
        connection.readHead();
        for (const char byte : alert) {
            if (!connection.pause(20) || !connection.send(QByteArray(1, byte)))
                return;
        }
        connection.hold();
    });
    EXPECT_EQ(errorOf(send(server.url())), HttpError::secureConnectionFailed);
}

TEST(TlsEvidence, isNotAwaitedFromOtherBytes)
{
    const LoopbackServer server(stallingAfter("-"));
    EXPECT_TRUE(takesLessThan(afterASecond,
                              [&server] { EXPECT_EQ(errorOf(send(server.url())), nonHttp); }));
}

TEST(TlsEvidence, isAskedForAfterAReset)
{
    RequestLog log;
    const LoopbackServer server([&log](LoopbackConnection &connection) {
        log.add(connection.readHead());
        connection.resetAtEnd();
    });
    EXPECT_EQ(errorOf(send(server.url())), HttpError::connectionLost);
    EXPECT_EQ(helloCount(log), 1);
}

TEST(TlsEvidence, isNotAskedForInSilence)
{
    RequestLog log;
    const LoopbackServer server([&log](LoopbackConnection &connection) {
        log.add(connection.readHead());
        connection.hold();
    });
    EXPECT_EQ(errorOf(send(server.url())), HttpError::timedOut);
    EXPECT_EQ(log.heads().size(), 1U);
}

TEST(TlsEvidence, isNotAskedForByAnHttpsRequest)
{
    RequestLog log;
    const LoopbackServer server(logging(log, sending({})));
    QString url = server.url();
    url.replace(QLatin1String("http:"), QLatin1String("https:"));
    EXPECT_EQ(errorOf(send(url)), HttpError::secureConnectionFailed);
    EXPECT_EQ(server.connectionCount(), 1);
}

TEST(TlsEvidence, ofOneMethodServesTheOthers)
{
    RequestLog log;
    const LoopbackServer server(logging(log, sending({})));
    TlsEvidence evidence;
    for (const char *method : {"GET", "HEAD", "OPTIONS"}) {
        const auto outcome = CurlHttpClient().send({server.url(), method, {}}, evidence, {});
        EXPECT_EQ(errorOf(outcome), HttpError::connectionLost);
    }
    EXPECT_EQ(helloCount(log), 1);
    EXPECT_EQ(requestCount(log), 3);
}

TEST(TlsEvidence, isKeptFromBytesToo)
{
    for (const QByteArray &first : {alert, QByteArray("-ERR\r\n")}) {
        RequestLog log;
        const LoopbackServer server([&](LoopbackConnection &connection) {
            const QByteArray head = connection.readHead();
            log.add(head);
            if (head.startsWith("GET"))
                connection.send(first);
        });
        TlsEvidence evidence;
        CurlHttpClient().send({server.url(), "GET", {}}, evidence, {});
        const auto outcome = CurlHttpClient().send({server.url(), "HEAD", {}}, evidence, {});
        const bool isTls = first == alert;
        EXPECT_EQ(errorOf(outcome),
                  isTls ? HttpError::secureConnectionFailed : HttpError::connectionLost);
        EXPECT_EQ(helloCount(log), 0);
    }
}

TEST(TlsEvidence, isOfOneAddress)
{
    RequestLog log;
    const LoopbackServer server(logging(log, sending({})));
    const LoopbackServer other(logging(log, sending({})));
    TlsEvidence evidence;
    for (const LoopbackServer *each : {&server, &other})
        CurlHttpClient().send({each->url(), "GET", {}}, evidence, {});
    EXPECT_EQ(helloCount(log), 2);
}

// A second of its own for the hello would end the last row after 1950 ms.
TEST(TlsEvidence, isAwaitedForTheRestOfTheSecond)
{
    for (const int milliseconds : {0, 500, 950}) {
        EXPECT_TRUE(takesLessThan(1500ms, [milliseconds] {
            RequestLog log;
            const LoopbackServer server(deafToHellos(log, milliseconds));
            QElapsedTimer timer;
            timer.start();
            EXPECT_EQ(errorOf(send(server.url())), HttpError::connectionLost);
            EXPECT_GE(timer.elapsed(), 990);
            EXPECT_EQ(helloCount(log), 1);
        }));
    }
}

TEST(TlsEvidence, isNotAwaitedFromAServerThatAnswersABareRequest)
{
    for (const QByteArray &bytes : {QByteArray("-ERR\r\n"), ok("page"), alert}) {
        EXPECT_TRUE(takesLessThan(afterASecond, [&bytes] {
            RequestLog log;
            const LoopbackServer server(likeRedis(log, bytes));
            EXPECT_EQ(errorOf(send(server.url())), bytes == alert
                                                       ? HttpError::secureConnectionFailed
                                                       : HttpError::connectionLost);
            // The server may read the hello after the client has gone.
            EXPECT_TRUE(waitUntil([&log] { return log.heads().size() >= 3; }));
            const auto heads = log.heads();
            EXPECT_EQ(heads.size(), 3U);
            EXPECT_EQ(std::count(heads.begin(), heads.end(), "GET / HTTP/1.0\r\n\r\n"), 1);
        }));
    }
}

TEST(TlsEvidence, takesNoBareRequestWhereTheHelloIsRefusedAtOnce)
{
    RequestLog log;
    const LoopbackServer server([&log](LoopbackConnection &connection) {
        const QByteArray head = connection.readHead();
        log.add(head);
        if (!isHello(head))
            connection.pause(50);
    });
    EXPECT_EQ(errorOf(send(server.url())), HttpError::connectionLost);
    EXPECT_EQ(log.heads().size(), 2U);
}

TEST(TlsEvidence, isNotAwaitedAfterAStop)
{
    EXPECT_TRUE(takesLessThan(afterASecond, [] {
        RequestLog log;
        const LoopbackServer server(deafToHellos(log, 0));
        std::stop_source source;
        auto request = std::async(
            std::launch::async, [&] { return send(server.url(), "GET", {}, source.get_token()); });
        EXPECT_TRUE(waitUntil([&log] { return helloCount(log) > 0; }));
        source.request_stop();
        EXPECT_EQ(errorOf(request.get()), HttpError::cancelled);
    }));
}

// What a whole probe costs a server on 127.0.0.1: "localhost" and the address itself lead there.

struct ProbeRow
{
    const char *name;
    QByteArray bytes;
    int requests;
    int hellos;
};

class ProbedServer : public testing::TestWithParam<ProbeRow>
{
};

TEST_P(ProbedServer, isAskedNoMoreThanItMust)
{
    RequestLog log;
    const LoopbackServer server(logging(log, sending(GetParam().bytes)));
    probeHttpService(server.port(), CurlHttpClient(), {});
    EXPECT_EQ(requestCount(log), GetParam().requests);
    EXPECT_EQ(helloCount(log), GetParam().hellos);
}

INSTANTIATE_TEST_SUITE_P(Rows, ProbedServer,
                         testing::Values(ProbeRow{"http", ok("page"), 1, 0},
                                         ProbeRow{"closing", {}, 6, 2},
                                         ProbeRow{"other", "220 mail\r\n", 6, 0},
                                         // The HTTPS check of each attempt.
                                         ProbeRow{"tls", alert, 6, 6}),
                         rowName);

TEST(TlsEvidence, ofARedisCostsAProbeTwoHellosAtMost)
{
    EXPECT_TRUE(takesLessThan(afterASecond, [] {
        RequestLog log;
        const LoopbackServer server(likeRedis(log, "-ERR\r\n"));
        probeHttpService(server.port(), CurlHttpClient(), {});
        // One for each address. The answer to the other request can come before it is sent.
        EXPECT_LE(helloCount(log), 2);
        EXPECT_EQ(log.heads().size() - size_t(helloCount(log)), 8U);
    }));
}
