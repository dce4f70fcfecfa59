#include "scan/http/CurlRequest.h"

#include "scan/http/ListenerOwner.h"
#include "scan/http/LoopbackHost.h"

#include <sys/socket.h>

namespace tidewick
{
namespace
{

constexpr long authoritiesSeconds = 60;

curl_socket_t openLoopbackSocket(void * /*context*/, curlsocktype /*purpose*/,
                                 curl_sockaddr *address)
{
    if (!isLoopbackAddress(address->addr) || isAnotherPersons(address->addr))
        return CURL_SOCKET_BAD;
    return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

EasyHandle newHandle(const LoopbackUrl &url)
{
    EasyHandle easy(curl_easy_init());
    curl_easy_setopt(easy.get(), CURLOPT_URL, url.text().constData());
    curl_easy_setopt(easy.get(), CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(easy.get(), CURLOPT_PROXY, "");
    curl_easy_setopt(easy.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy.get(), CURLOPT_OPENSOCKETFUNCTION, &openLoopbackSocket);
    // No request learns from another.
    curl_easy_setopt(easy.get(), CURLOPT_FORBID_REUSE, 1L);
    curl_easy_setopt(easy.get(), CURLOPT_SSL_SESSIONID_CACHE, 0L);
    return easy;
}

/// Lets curl keep the system's authorities for a minute. It keeps only what comes from one file, so
/// it is not to read the directory, which holds the same ones.
void keepAuthorities(CURL *easy)
{
    const char *file = nullptr;
    curl_easy_getinfo(easy, CURLINFO_CAINFO, &file);
    if (file == nullptr)
        return;
    curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
    curl_easy_setopt(easy, CURLOPT_CA_CACHE_TIMEOUT, authoritiesSeconds);
}

} // namespace

EasyHandle newRequest(const LoopbackUrl &url, const QByteArray &method, const QByteArray &userAgent,
                      const QByteArray &authorities)
{
    EasyHandle easy = newHandle(url);
    // Not CURLOPT_NOBODY for HEAD: it would keep back what is no HTTP.
    curl_easy_setopt(easy.get(), CURLOPT_CUSTOMREQUEST, method.constData());
    // Hands on bytes that are no HTTP, as a body without headers.
    curl_easy_setopt(easy.get(), CURLOPT_HTTP09_ALLOWED, 1L);
    if (!userAgent.isEmpty())
        curl_easy_setopt(easy.get(), CURLOPT_USERAGENT, userAgent.constData());
    if (authorities.isEmpty())
        keepAuthorities(easy.get());
    else
        curl_easy_setopt(easy.get(), CURLOPT_CAINFO, authorities.constData());
    return easy;
}

EasyHandle newBareRequest(const LoopbackUrl &url)
{
    static curl_slist *const noHeaders =
        curl_slist_append(curl_slist_append(nullptr, "Host:"), "Accept:");
    EasyHandle easy = newRequest(url, "GET", {}, {});
    curl_easy_setopt(easy.get(), CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_0);
    curl_easy_setopt(easy.get(), CURLOPT_HTTPHEADER, noHeaders);
    return easy;
}

EasyHandle newTlsHello(LoopbackUrl url)
{
    url.isTls = true;
    EasyHandle easy = newHandle(url);
    curl_easy_setopt(easy.get(), CURLOPT_CONNECT_ONLY, 1L);
    curl_easy_setopt(easy.get(), CURLOPT_SSL_VERIFYPEER, 0L);
    curl_easy_setopt(easy.get(), CURLOPT_SSL_VERIFYHOST, 0L);
    return easy;
}

} // namespace tidewick
