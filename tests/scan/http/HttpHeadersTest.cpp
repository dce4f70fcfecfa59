#include "scan/http/HttpClient.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

using tidewick::HttpHeaders;

struct HeaderRow
{
    const char *name;
    std::vector<QByteArray> lines;
    std::optional<QString> server;
};

class Header : public testing::TestWithParam<HeaderRow>
{
};

TEST_P(Header, isLookedUp)
{
    HttpHeaders headers;
    for (const QByteArray &line : GetParam().lines)
        headers.addLine(line);
    EXPECT_EQ(headers.value("Server"), GetParam().server);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Header,
    testing::Values(
        HeaderRow{"none", {}, std::nullopt},
        HeaderRow{"others", {"Date: today", "X-Server: b", "Servers: c"}, std::nullopt},
        HeaderRow{"asWritten", {"Server: nginx"}, QStringLiteral("nginx")},
        HeaderRow{"lineEnd", {"Server: nginx\r\n"}, QStringLiteral("nginx")},
        HeaderRow{"lineFeed", {"Server: nginx\n"}, QStringLiteral("nginx")},
        HeaderRow{"lowerCase", {"server: nginx"}, QStringLiteral("nginx")},
        HeaderRow{"upperCase", {"SERVER: nginx"}, QStringLiteral("nginx")},
        HeaderRow{"noSpace", {"Server:nginx"}, QStringLiteral("nginx")},
        HeaderRow{"spaceAround", {"Server: \t nginx \t\r\n"}, QStringLiteral("nginx")},
        HeaderRow{"colonsInTheValue", {"Server: a:b:c"}, QStringLiteral("a:b:c")},
        HeaderRow{"empty", {"Server:"}, QString()},
        HeaderRow{"blank", {"Server:   \r\n"}, QString()},
        HeaderRow{"noColon", {"Server nginx"}, std::nullopt},
        HeaderRow{"repeated", {"Server: a", "Date: x", "server: b"}, QStringLiteral("a, b")},
        HeaderRow{"threeTimes", {"Server: a", "Server: b", "Server: c"}, QStringLiteral("a, b, c")},
        HeaderRow{"continued", {"Server: a\r\n", "   b\r\n", "Date: x"}, QStringLiteral("a   b")},
        HeaderRow{"continuationOfNothing", {"  x", "Server: a"}, QStringLiteral("a")},
        HeaderRow{"utf8", {"Server: caf\xc3\xa9"}, QStringLiteral("caf\u00e9")},
        HeaderRow{"otherwiseLatin1", {"Server: caf\xe9"}, QStringLiteral("caf\u00e9")},
        HeaderRow{"markupStaysText", {"Server: <b>x</b>"}, QStringLiteral("<b>x</b>")},
        HeaderRow{"controls", {"Server: a\x01\x1b[31mb\x7f"}, QStringLiteral("a  [31mb")},
        HeaderRow{"carriageReturn", {"Server: a\rb"}, QStringLiteral("a b")},
        HeaderRow{"c1Controls", {"Server: a\x85z"}, QStringLiteral("a z")},
        HeaderRow{"lineSeparator", {"Server: a\xe2\x80\xa8z"}, QStringLiteral("a z")},
        HeaderRow{"directionOverride", {"Server: a\xe2\x80\xaez"}, QStringLiteral("a z")},
        HeaderRow{"controlsAlone", {"Server: \x01\x02"}, QString()},
        HeaderRow{
            "beyondTheBasicPlane", {"Server: \xf0\x9f\x90\x98"}, QStringLiteral("\U0001f418")}),
    rowName);
