// A listener answers the probe with any head and any body: a text is a header line, until one is
// empty; the rest is the body. The input's size says how often the body comes.

#include "scan/http/HttpProbe.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/Grammar.h"
#include "tests/support/RecordingHttpClient.h"

using namespace tidewick;

QByteArray validInput(Random &random)
{
    QByteArray answer;
    for (auto lines = random() % 5; lines > 0; --lines)
        answer += oneOf(random, {"Server", "X-Powered-By", "server", "Content-Type", "Via"}) +
                  ": " +
                  oneOf(random, {"nginx/1.25", "Express", "Werkzeug/3.0 Python/3.11", "Next.js"}) +
                  "\r\n" + '\0';
    return answer + '\0' + "<html><head><title>" + oneOf(random, {"Shop", "a &amp; b", "Vite"}) +
           "</title></head></html>";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QList<QByteArray> texts = pieces(data, size, 1);
    HttpResponse response;
    response.status = 100 + static_cast<int>(size % 500);
    while (!texts.isEmpty() && !texts.first().isEmpty())
        response.headers.addLine(texts.takeFirst());
    countRecords(size_t(pieces(data, size, 1).size() - texts.size()));
    response.body = texts.join('\0').repeated(qsizetype(size % 16)).left(HttpResponse::bodyLimit);
    const RecordingHttpClient client([&response](const HttpRequest &) { return response; });
    const ProbeResult result = probeHttpService(3000, client, {});
    promise(result.isAccessible && result.statusCode == response.status, "an answer is an answer");
    promise(!result.serverInfo ||
                (!result.serverInfo->isEmpty() && isSingleLine(*result.serverInfo)),
            "a server's name is one line, and never empty");
    for (const char *name : {"Server", "X-Powered-By", "server"}) {
        const auto value = response.headers.value(name);
        promise(!value || isSingleLine(*value), "a header is one line");
        promise(!value || (!value->startsWith(QLatin1Char(' ')) && *value == value->trimmed()) ||
                    value->contains(QLatin1Char(',')),
                "a header has no blanks around it");
    }
    promise(response.headers.value("server") == response.headers.value("Server"),
            "the case of a header's name does not matter");
    return 0;
}
