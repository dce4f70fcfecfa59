#include "scan/http/LoopbackUrl.h"

#include "scan/http/LoopbackHost.h"

#include <curl/curl.h>

#include <memory>

namespace tidewick
{
namespace
{

struct UrlCleanup
{
    void operator()(CURLU *url) const { curl_url_cleanup(url); }
};
using UrlHandle = std::unique_ptr<CURLU, UrlCleanup>;

bool parse(const UrlHandle &url, const QByteArray &text, unsigned flags)
{
    return curl_url_set(url.get(), CURLUPART_URL, text.constData(), flags) == CURLUE_OK;
}

/// The empty text where the URL has no such part.
QByteArray part(const UrlHandle &url, CURLUPart which, unsigned flags = 0)
{
    char *text = nullptr;
    if (curl_url_get(url.get(), which, &text, flags) != CURLUE_OK)
        return {};
    QByteArray copy(text);
    curl_free(text);
    return copy;
}

std::optional<LoopbackUrl> loopbackUrl(const UrlHandle &url)
{
    const QByteArray scheme = part(url, CURLUPART_SCHEME);
    if (scheme != "http" && scheme != "https")
        return std::nullopt;
    QByteArray host = part(url, CURLUPART_HOST).toLower();
    if (host.endsWith('.'))
        host.chop(1);
    if (!isLoopbackHost(host))
        return std::nullopt;
    const QByteArray query = part(url, CURLUPART_QUERY);
    return LoopbackUrl{scheme == "https", host, part(url, CURLUPART_PORT, CURLU_DEFAULT_PORT),
                       part(url, CURLUPART_PATH) + (query.isEmpty() ? query : '?' + query)};
}

} // namespace

std::optional<LoopbackUrl> loopbackUrl(const QByteArray &text)
{
    const UrlHandle url(curl_url());
    return parse(url, text, 0) ? loopbackUrl(url) : std::nullopt;
}

std::optional<LoopbackUrl> redirectTarget(const LoopbackUrl &base, const QByteArray &location)
{
    const UrlHandle url(curl_url());
    const bool parses = !location.isEmpty() && parse(url, base.text(), 0) &&
                        parse(url, location, CURLU_URLENCODE | CURLU_ALLOW_SPACE);
    return parses ? loopbackUrl(url) : std::nullopt;
}

} // namespace tidewick
