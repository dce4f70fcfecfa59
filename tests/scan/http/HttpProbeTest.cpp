#include "scan/http/HttpProbe.h"
#include "tests/support/ProbeText.h"
#include "tests/support/RecordingHttpClient.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

using tidewick::HttpError;
using tidewick::HttpOutcome;
using tidewick::HttpRequest;
using tidewick::HttpResponse;
using tidewick::NonHttpResponse;
using tidewick::probeHttpService;
using tidewick::ProbeResult;

namespace
{

constexpr qint64 quietPort = 40000;
const ProbeResult nothing{false, std::nullopt, std::nullopt};

HttpResponse response(int status, const std::vector<QByteArray> &headers,
                      const QByteArray &body = {})
{
    HttpResponse response;
    response.status = status;
    for (const QByteArray &line : headers)
        response.headers.addLine(line);
    response.body = body;
    return response;
}

HttpOutcome refused(const HttpRequest & /*request*/)
{
    return HttpError{HttpError::cannotConnect};
}

/// A client whose n-th request, counted from one, has `outcome`; the others are refused.
RecordingHttpClient answeringAt(size_t n, const HttpOutcome &outcome)
{
    return RecordingHttpClient([n, outcome, count = size_t{0}](const HttpRequest &) mutable {
        return ++count == n ? outcome : HttpOutcome(HttpError{HttpError::cannotConnect});
    });
}

ProbeResult probe(const RecordingHttpClient &client, qint64 port = quietPort)
{
    return probeHttpService(port, client, {});
}

ProbeResult probeOf(const HttpResponse &answer)
{
    return probe(RecordingHttpClient([&answer](const HttpRequest &) { return answer; }));
}

QString line(const HttpRequest &request)
{
    return QString::fromLatin1(request.method) + QLatin1Char(' ') + request.url;
}

QStringList lines(const RecordingHttpClient &client)
{
    QStringList all;
    for (const HttpRequest &request : client.requests())
        all.append(line(request));
    return all;
}

bool isHttps(const HttpRequest &request)
{
    return request.url.startsWith(QLatin1String("https:"));
}

const QStringList &nineAttempts()
{
    static const QStringList attempts{
        QStringLiteral("GET http://localhost:40000"),
        QStringLiteral("HEAD http://localhost:40000"),
        QStringLiteral("OPTIONS http://localhost:40000"),
        QStringLiteral("GET http://127.0.0.1:40000"),
        QStringLiteral("HEAD http://127.0.0.1:40000"),
        QStringLiteral("OPTIONS http://127.0.0.1:40000"),
        QStringLiteral("GET http://[::1]:40000"),
        QStringLiteral("HEAD http://[::1]:40000"),
        QStringLiteral("OPTIONS http://[::1]:40000"),
    };
    return attempts;
}

} // namespace

// The order of the attempts

TEST(HttpProbe, triesEachMethodOnEachAddressInOrder)
{
    const RecordingHttpClient client(refused);
    EXPECT_EQ(probe(client), nothing);
    EXPECT_EQ(lines(client), nineAttempts());
}

TEST(HttpProbe, saysWhoItIsInEveryAttempt)
{
    const RecordingHttpClient client(refused);
    probe(client);
    for (const HttpRequest &request : client.requests())
        EXPECT_EQ(request.userAgent, "Tidewick/1.0");
}

class HttpProbeEnding : public testing::TestWithParam<int>
{
};

TEST_P(HttpProbeEnding, isTheFirstResponse)
{
    const auto n = size_t(GetParam());
    const RecordingHttpClient client = answeringAt(n, response(204, {"Server: late"}));
    EXPECT_EQ(probe(client), (ProbeResult{true, 204, QStringLiteral("late")}));
    EXPECT_EQ(lines(client), nineAttempts().first(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(AtAttempt, HttpProbeEnding, testing::Range(1, 10));

TEST(HttpProbe, aListenerOnTheIpv6LoopbackOnlyIsFoundByTheSeventhAttempt)
{
    const RecordingHttpClient client([](const HttpRequest &request) -> HttpOutcome {
        if (request.url.startsWith(QLatin1String("http://[::1]:")))
            return response(200, {});
        return HttpError{HttpError::cannotConnect};
    });
    EXPECT_EQ(probe(client), (ProbeResult{true, 200, std::nullopt}));
    EXPECT_EQ(client.requests().size(), 7U);
    EXPECT_EQ(line(client.requests().back()), QStringLiteral("GET http://[::1]:40000"));
}

class HttpProbeStatus : public testing::TestWithParam<int>
{
};

TEST_P(HttpProbeStatus, isReportedWhateverItIs)
{
    EXPECT_EQ(probeOf(response(GetParam(), {})), (ProbeResult{true, GetParam(), std::nullopt}));
}

INSTANTIATE_TEST_SUITE_P(Of, HttpProbeStatus,
                         testing::Values(101, 200, 204, 301, 304, 400, 401, 404, 418, 500, 503,
                                         999));

TEST(HttpProbe, anAnswerThatIsNotHttpGoesOnToTheNextMethod)
{
    const RecordingHttpClient client([](const HttpRequest &) { return NonHttpResponse{}; });
    EXPECT_EQ(probe(client), nothing);
    EXPECT_EQ(lines(client), nineAttempts());
}

TEST(HttpProbe, anAnswerThatIsNotHttpToTheLastMethodGoesOnToTheNextAddress)
{
    const RecordingHttpClient client([](const HttpRequest &request) -> HttpOutcome {
        if (request.url.contains(QLatin1String("localhost")))
            return NonHttpResponse{};
        return response(200, {});
    });
    probe(client);
    EXPECT_EQ(lines(client), nineAttempts().first(4));
}

class HttpProbeOtherError : public testing::TestWithParam<int>
{
};

TEST_P(HttpProbeOtherError, goesOnWithoutAnHttpsCheck)
{
    const RecordingHttpClient client([](const HttpRequest &) { return HttpError{GetParam()}; });
    EXPECT_EQ(probe(client), nothing);
    EXPECT_EQ(lines(client), nineAttempts());
}

INSTANTIATE_TEST_SUITE_P(Of, HttpProbeOtherError,
                         testing::Values(-1, -999, -1001, -1004, -1005, -1007, -1199, -1201, -1203,
                                         -1204, -2000, 0, 1200, 1202));

TEST(HttpProbe, aPortThatIsNoPortAsksNothing)
{
    for (const qint64 port : {qint64{-1}, qint64{65536}, qint64{1} << 40}) {
        const RecordingHttpClient client(refused);
        EXPECT_EQ(probe(client, port), nothing);
        EXPECT_TRUE(client.requests().empty()) << port;
    }
}

// The HTTPS check

class HttpProbeTlsError : public testing::TestWithParam<int>
{
};

TEST_P(HttpProbeTlsError, isFollowedByAnHttpsCheckThatEndsTheProbe)
{
    const RecordingHttpClient client([](const HttpRequest &request) -> HttpOutcome {
        if (isHttps(request))
            return response(404, {"Server: hidden"}, "@vite");
        return HttpError{GetParam()};
    });
    EXPECT_EQ(probe(client), (ProbeResult{true, std::nullopt, QStringLiteral("HTTPS")}));
    EXPECT_EQ(lines(client), (QStringList{QStringLiteral("GET http://localhost:40000"),
                                          QStringLiteral("HEAD https://localhost:40000")}));
}

TEST_P(HttpProbeTlsError, hasAnHttpsCheckWithoutAUserAgent)
{
    const RecordingHttpClient client([](const HttpRequest &) { return HttpError{GetParam()}; });
    probe(client);
    for (const HttpRequest &request : client.requests())
        EXPECT_EQ(request.userAgent, isHttps(request) ? "" : "Tidewick/1.0");
}

TEST_P(HttpProbeTlsError, goesOnWhereTheCheckFails)
{
    const RecordingHttpClient client([](const HttpRequest &) { return HttpError{GetParam()}; });
    EXPECT_EQ(probe(client), nothing);
    QStringList expected;
    for (const QString &attempt : nineAttempts()) {
        expected.append(attempt);
        const QString address = attempt.section(QLatin1String("//"), 1);
        expected.append(QStringLiteral("HEAD https://") + address);
    }
    EXPECT_EQ(lines(client), expected);
}

TEST_P(HttpProbeTlsError, goesOnWhereTheCheckMeetsSomethingElse)
{
    const RecordingHttpClient client([](const HttpRequest &request) -> HttpOutcome {
        if (isHttps(request))
            return NonHttpResponse{};
        return HttpError{GetParam()};
    });
    EXPECT_EQ(probe(client), nothing);
    EXPECT_EQ(client.requests().size(), 18U);
}

INSTANTIATE_TEST_SUITE_P(Of, HttpProbeTlsError, testing::Values(-1200, -1202));

TEST(HttpProbe, aFailedCheckDoesNotHideALaterAnswer)
{
    const RecordingHttpClient client([](const HttpRequest &request) -> HttpOutcome {
        if (request.method == "OPTIONS")
            return response(200, {});
        return HttpError{HttpError::certificateUntrusted};
    });
    EXPECT_EQ(probe(client), (ProbeResult{true, 200, std::nullopt}));
    EXPECT_EQ(client.requests().size(), 5U);
}

// The end without an answer

struct FallbackRow
{
    qint64 port;
    bool isAccessible;
};

class HttpProbeFallback : public testing::TestWithParam<FallbackRow>
{
};

TEST_P(HttpProbeFallback, knowsDevelopmentPorts)
{
    const ProbeResult expected{GetParam().isAccessible, std::nullopt, std::nullopt};
    EXPECT_EQ(probe(RecordingHttpClient(refused), GetParam().port), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, HttpProbeFallback,
    testing::Values(FallbackRow{0, false}, FallbackRow{1, false}, FallbackRow{79, false},
                    FallbackRow{80, true}, FallbackRow{81, false}, FallbackRow{442, false},
                    FallbackRow{443, true}, FallbackRow{444, false}, FallbackRow{2999, false},
                    FallbackRow{3000, true}, FallbackRow{3005, true}, FallbackRow{3010, true},
                    FallbackRow{3011, false}, FallbackRow{3999, false}, FallbackRow{4000, true},
                    FallbackRow{4010, true}, FallbackRow{4011, false}, FallbackRow{4199, false},
                    FallbackRow{4200, true}, FallbackRow{4201, false}, FallbackRow{4999, false},
                    FallbackRow{5000, true}, FallbackRow{5010, true}, FallbackRow{5011, false},
                    FallbackRow{5172, false}, FallbackRow{5173, true}, FallbackRow{5174, false},
                    FallbackRow{7999, false}, FallbackRow{8000, true}, FallbackRow{8888, true},
                    FallbackRow{8889, false}, FallbackRow{8999, false}, FallbackRow{9000, true},
                    FallbackRow{9999, true}, FallbackRow{10000, false}, FallbackRow{18999, false},
                    FallbackRow{19000, true}, FallbackRow{19999, true}, FallbackRow{20000, false},
                    FallbackRow{65535, false}),
    [](const auto &info) { return std::to_string(info.param.port); });

// What the server calls itself

struct ServerInfoRow
{
    const char *name;
    std::vector<QByteArray> headers;
    QByteArray body;
    std::optional<QString> serverInfo;
};

class HttpProbeServerInfo : public testing::TestWithParam<ServerInfoRow>
{
};

TEST_P(HttpProbeServerInfo, isReadFromHeadersThenFromThePage)
{
    const auto &[name, headers, body, serverInfo] = GetParam();
    EXPECT_EQ(probeOf(response(200, headers, body)), (ProbeResult{true, 200, serverInfo}));
}

INSTANTIATE_TEST_SUITE_P(
    Headers, HttpProbeServerInfo,
    testing::Values(
        ServerInfoRow{"server", {"Server: nginx/1.25"}, {}, QStringLiteral("nginx/1.25")},
        ServerInfoRow{"serverInAnyCase", {"sErVeR: nginx"}, {}, QStringLiteral("nginx")},
        ServerInfoRow{"serverTwice", {"Server: a", "Server: b"}, {}, QStringLiteral("a, b")},
        ServerInfoRow{"poweredBy", {"X-Powered-By: Express"}, {}, QStringLiteral("Express")},
        ServerInfoRow{"serverBeforePoweredBy",
                      {"X-Powered-By: Express", "Server: nginx"},
                      {},
                      QStringLiteral("nginx")},
        ServerInfoRow{"serverBeforePage", {"Server: nginx"}, "@vite", QStringLiteral("nginx")},
        ServerInfoRow{"poweredByBeforePage", {"X-Powered-By: x"}, "@vite", QStringLiteral("x")},
        ServerInfoRow{"emptyServerStopsTheSearch",
                      {"Server:", "X-Powered-By: Express"},
                      "@vite",
                      std::nullopt},
        ServerInfoRow{"emptyPoweredByStopsTheSearch", {"X-Powered-By: "}, "@vite", std::nullopt}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Pages, HttpProbeServerInfo,
    testing::Values(
        ServerInfoRow{"empty", {}, "", std::nullopt},
        ServerInfoRow{"noMarker", {}, "<html><body>hello</body></html>", std::nullopt},
        ServerInfoRow{"nextData", {}, "a __NEXT_DATA__ b", QStringLiteral("Next.js")},
        ServerInfoRow{"nextPath", {}, "src=/_next/x.js", QStringLiteral("Next.js")},
        ServerInfoRow{"vite", {}, "window.__vite_plugin", QStringLiteral("Vite")},
        ServerInfoRow{
            "viteClient", {}, "script type=module src=/@vite/client", QStringLiteral("Vite")},
        ServerInfoRow{"react", {}, "__REACT_DEVTOOLS", QStringLiteral("React")},
        ServerInfoRow{"reactRoot", {}, "<div id=react-root>", QStringLiteral("React")},
        ServerInfoRow{"angularVersion", {}, "<app ng-version=17>", QStringLiteral("Angular")},
        ServerInfoRow{"angular", {}, "my angular page", QStringLiteral("Angular")},
        ServerInfoRow{"vue", {}, "data.__vue_app__", QStringLiteral("Vue")},
        ServerInfoRow{"nextBeforeVite", {}, "@vite /_next/", QStringLiteral("Next.js")},
        ServerInfoRow{"viteBeforeReact", {}, "react-root @vite", QStringLiteral("Vite")},
        ServerInfoRow{"reactBeforeAngular", {}, "angular react-root", QStringLiteral("React")},
        ServerInfoRow{"angularBeforeVue", {}, "__vue angular", QStringLiteral("Angular")},
        ServerInfoRow{"caseMatters", {}, "__next_data__ @Vite __react ANGULAR __VUE", std::nullopt},
        ServerInfoRow{"atTheVeryEnd", {}, QByteArray(4000, 'x') + "__vue", QStringLiteral("Vue")},
        ServerInfoRow{"afterANullByte", {}, QByteArray("a\0@vite", 7), QStringLiteral("Vite")},
        ServerInfoRow{"otherwiseUtf8", {}, "caf\xc3\xa9 @vite", QStringLiteral("Vite")},
        ServerInfoRow{"notUtf8", {}, "caf\xe9 @vite", std::nullopt},
        ServerInfoRow{"cutUtf8", {}, "@vite caf\xc3", std::nullopt},
        ServerInfoRow{"9999Bytes", {}, "@vite" + QByteArray(9994, 'x'), QStringLiteral("Vite")},
        ServerInfoRow{"10000Bytes", {}, "__NEXT_DATA__" + QByteArray(9987, 'x'), std::nullopt},
        ServerInfoRow{"longPageWithServer",
                      {"Server: nginx"},
                      QByteArray(10000, 'x'),
                      QStringLiteral("nginx")}),
    rowName);

// Whole cases

TEST(HttpProbe, a404FromNginxIsAccessible)
{
    const RecordingHttpClient client = answeringAt(1, response(404, {"Server: nginx/1.25"}));
    EXPECT_EQ(probe(client), (ProbeResult{true, 404, QStringLiteral("nginx/1.25")}));
    EXPECT_EQ(lines(client), nineAttempts().first(1));
}

TEST(HttpProbe, aVitePageIsRecognised)
{
    const QByteArray page = "<script type=module src=/@vite/client></script>";
    EXPECT_EQ(probeOf(response(200, {}, page)), (ProbeResult{true, 200, QStringLiteral("Vite")}));
}

TEST(HttpProbe, aPageWithoutMarkerHasNoServerInfo)
{
    const QByteArray page = "<script type=module src=/main.js></script>";
    EXPECT_EQ(probeOf(response(200, {}, page)), (ProbeResult{true, 200, std::nullopt}));
}

TEST(HttpProbe, aTlsOnlyListenerIsCalledHttps)
{
    const RecordingHttpClient client([](const HttpRequest &request) -> HttpOutcome {
        if (isHttps(request) && request.method == "HEAD")
            return response(200, {"Server: hidden"});
        return HttpError{HttpError::secureConnectionFailed};
    });
    EXPECT_EQ(probe(client), (ProbeResult{true, std::nullopt, QStringLiteral("HTTPS")}));
}

// A stop

TEST(HttpProbe, asksNothingAfterAStop)
{
    std::stop_source source;
    source.request_stop();
    const RecordingHttpClient client(refused);
    probeHttpService(quietPort, client, source.get_token());
    EXPECT_TRUE(client.requests().empty());
}

TEST(HttpProbe, makesNoFurtherAttemptOnceStopped)
{
    std::stop_source source;
    const RecordingHttpClient client([&source](const HttpRequest &) {
        source.request_stop();
        return HttpError{HttpError::cancelled};
    });
    probeHttpService(quietPort, client, source.get_token());
    EXPECT_EQ(client.requests().size(), 1U);
}
