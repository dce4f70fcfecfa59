#include "scan/http/HttpProbe.h"

#include "text/Utf8.h"

#include <QByteArrayView>
#include <QStringView>
#include <QUrl>

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>
#include <variant>

namespace tidewick
{
namespace
{

constexpr std::array<QStringView, 3> addressPrefixes{u"http://localhost:", u"http://127.0.0.1:",
                                                     u"http://[::1]:"};

constexpr std::array<const char *, 3> methods{"GET", "HEAD", "OPTIONS"};

constexpr const char *userAgent = "Tidewick/1.0";

constexpr std::array<qint64, 4> fallbackPorts{80, 443, 4200, 5173};

struct PortRange
{
    qint64 first;
    qint64 last;
};
constexpr std::array<PortRange, 6> fallbackRanges{{
    {3000, 3010},
    {4000, 4010},
    {5000, 5010},
    {8000, 8888},
    {9000, 9999},
    {19000, 19999},
}};

/// A page that holds one of the two texts was made by the named framework. First match wins.
struct BodyMarker
{
    QStringView text;
    QStringView otherText;
    QStringView serverInfo;
};
constexpr std::array<BodyMarker, 5> bodyMarkers{{
    {u"__NEXT_DATA__", u"/_next/", u"Next.js"},
    {u"__vite", u"@vite", u"Vite"},
    {u"__REACT", u"react-root", u"React"},
    {u"ng-version", u"angular", u"Angular"},
    {u"__vue", u"__vue", u"Vue"},
}};

bool isWellKnownDevelopmentPort(qint64 port)
{
    return std::any_of(fallbackPorts.begin(), fallbackPorts.end(),
                       [port](qint64 known) { return known == port; }) ||
           std::any_of(fallbackRanges.begin(), fallbackRanges.end(), [port](PortRange range) {
               return range.first <= port && port <= range.last;
           });
}

QString frameworkOfPage(const QByteArray &body)
{
    if (body.size() >= HttpResponse::bodyLimit)
        return {};
    const auto page = decodeUtf8(body);
    if (!page)
        return {};
    const auto marker =
        std::find_if(bodyMarkers.begin(), bodyMarkers.end(), [&page](const BodyMarker &row) {
            return page->contains(row.text) || page->contains(row.otherText);
        });
    return marker == bodyMarkers.end() ? QString() : marker->serverInfo.toString();
}

std::optional<QString> serverInfo(const HttpResponse &response)
{
    auto info = response.headers.value("Server");
    if (!info)
        info = response.headers.value("X-Powered-By");
    if (!info)
        info = frameworkOfPage(response.body);
    return info->isEmpty() ? std::nullopt : info;
}

bool isUrl(const QString &text)
{
    return QUrl(text, QUrl::StrictMode).isValid();
}

bool isTlsError(const HttpError &error)
{
    return error.code == HttpError::secureConnectionFailed ||
           error.code == HttpError::certificateUntrusted;
}

bool answersHttps(QString address, const HttpClient &client, TlsEvidence &evidence,
                  const std::stop_token &stop)
{
    address.replace(QLatin1String("http://"), QLatin1String("https://"));
    return isUrl(address) &&
           std::holds_alternative<HttpResponse>(client.send({address, "HEAD", {}}, evidence, stop));
}

/// One attempt and its HTTPS check; nothing where the probe has to go on.
std::optional<ProbeResult> attempt(const QString &address, const char *method,
                                   const HttpClient &client, TlsEvidence &evidence,
                                   const std::stop_token &stop)
{
    const HttpOutcome outcome = client.send({address, method, userAgent}, evidence, stop);
    if (const auto *response = std::get_if<HttpResponse>(&outcome))
        return ProbeResult{true, response->status, serverInfo(*response)};
    const auto *error = std::get_if<HttpError>(&outcome);
    if (error != nullptr && isTlsError(*error) && answersHttps(address, client, evidence, stop))
        return ProbeResult{true, std::nullopt, QStringLiteral("HTTPS")};
    return std::nullopt;
}

} // namespace

ProbeResult probeHttpService(qint64 port, const HttpClient &client, const std::stop_token &stop)
{
    TlsEvidence evidence;
    for (const QStringView prefix : addressPrefixes) {
        const QString address = prefix.toString() + QString::number(port);
        if (!isUrl(address))
            continue;
        for (const char *method : methods) {
            if (stop.stop_requested())
                return {};
            if (auto result = attempt(address, method, client, evidence, stop))
                return *std::move(result);
        }
    }
    return {isWellKnownDevelopmentPort(port), std::nullopt, std::nullopt};
}

} // namespace tidewick
