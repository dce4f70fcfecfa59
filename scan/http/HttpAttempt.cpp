#include "scan/http/HttpAttempt.h"

#include "scan/http/CurlRequest.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tidewick
{
namespace
{

constexpr auto attemptTime = std::chrono::seconds(1);
/// What a TLS hello may take of it: ten times what it does take. A server that knows no TLS may
/// well wait in silence for the rest of what it takes for a request (Redis does).
constexpr auto helloTime = std::chrono::milliseconds(100);
constexpr int redirectLimit = 20;

/// How a TLS server's answer to a plain request looks: nothing, a reset, or no HTTP.
bool mayBeTls(const HttpError &error)
{
    return error.code == HttpError::connectionLost || error.code == HttpError::badServerResponse;
}

} // namespace

HttpAttempt::HttpAttempt(QByteArray authorities, const std::stop_token &stop)
    : m_authorities(std::move(authorities)),
      m_stop(stop),
      m_transfers(stop),
      m_deadline(CurlTransfers::Clock::now() + attemptTime)
{
}

HttpOutcome HttpAttempt::run(const HttpRequest &request) const
{
    std::optional<LoopbackUrl> url = loopbackUrl(request.url.toUtf8());
    if (!url)
        return HttpError{HttpError::unsupportedUrl};
    QByteArray method = request.method;
    for (int redirects = 0; redirects <= redirectLimit; ++redirects) {
        const EasyHandle easy = newRequest(*url, method, request.userAgent, m_authorities);
        HttpAnswer answer(easy.get(), *url);
        const std::optional<HttpError> error = m_transfers.run(easy.get(), m_deadline);
        if (!answer.redirect())
            return outcome(answer, error, *url);
        if (answer.status() == 303 && method != "HEAD")
            method = "GET";
        url = answer.redirect();
    }
    return HttpError{HttpError::tooManyRedirects};
}

HttpOutcome HttpAttempt::outcome(HttpAnswer &answer, const std::optional<HttpError> &error,
                                 const LoopbackUrl &url) const
{
    if (answer.headersAreTooLong())
        return HttpError{HttpError::headersTooLong};
    if ((answer.hasHead() && !error) || answer.hasEnough())
        return answer.takeResponse();
    // Without a fault, the connection ended within the headers.
    const HttpError failure = error.value_or(HttpError{HttpError::connectionLost});
    if (!url.isTls && !answer.hasHead() && mayBeTls(failure) && speaksTls(url))
        return HttpError{HttpError::secureConnectionFailed};
    return m_stop.stop_requested() ? HttpError{HttpError::cancelled} : failure;
}

bool HttpAttempt::speaksTls(const LoopbackUrl &url) const
{
    const EasyHandle easy = newTlsHello(url);
    const auto deadline = std::min(m_deadline, CurlTransfers::Clock::now() + helloTime);
    return !m_transfers.run(easy.get(), deadline);
}

} // namespace tidewick
