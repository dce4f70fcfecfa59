#include "scan/http/HttpAttempt.h"

#include "scan/http/CurlRequest.h"
#include "scan/http/TlsHello.h"

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

namespace tidewick
{
namespace
{

constexpr auto attemptTime = std::chrono::seconds(1);
constexpr size_t redirectLimit = 5;

} // namespace

HttpAttempt::HttpAttempt(QByteArray authorities, CurlMultiPool &multis, TlsEvidence &evidence,
                         const std::stop_token &stop)
    : m_authorities(std::move(authorities)),
      m_evidence(evidence),
      m_stop(stop),
      m_transfers(multis.take(), stop),
      m_deadline(Clock::now() + attemptTime)
{
}

HttpOutcome HttpAttempt::run(const HttpRequest &request) const
{
    std::optional<LoopbackUrl> url = loopbackUrl(request.url.toUtf8());
    if (!url)
        return HttpError{HttpError::unsupportedUrl};
    QByteArray method = request.method;
    std::vector<LoopbackUrl> asked;
    while (asked.size() <= redirectLimit &&
           std::find(asked.begin(), asked.end(), *url) == asked.end()) {
        asked.push_back(*url);
        const EasyHandle easy = newRequest(*url, method, request.userAgent, m_authorities);
        HttpAnswer answer(easy.get(), *url, method);
        const Clock::time_point start = Clock::now();
        const std::optional<HttpError> error = m_transfers.run(easy.get(), m_deadline);
        if (!answer.redirect())
            return outcome(answer, error, *url, Clock::now() - start);
        if (answer.status() == 303 && method != "HEAD")
            method = "GET";
        url = answer.redirect();
    }
    return HttpError{HttpError::tooManyRedirects};
}

HttpOutcome HttpAttempt::outcome(HttpAnswer &answer, const std::optional<HttpError> &error,
                                 const LoopbackUrl &url, Clock::duration time) const
{
    if (answer.headersAreTooLong())
        return HttpError{HttpError::headersTooLong};
    if ((answer.hasHead() && !error) || answer.hasEnough())
        return answer.takeResponse();
    // Without a fault, the connection ended within the headers.
    const HttpError failure = error.value_or(HttpError{HttpError::connectionLost});
    if (!url.isTls && speaksTls(answer, failure, url, time))
        return HttpError{HttpError::secureConnectionFailed};
    if (answer.isNonHttp())
        return NonHttpResponse{};
    return m_stop.stop_requested() ? HttpError{HttpError::cancelled} : failure;
}

/// Whether a plain request for `url` has failed because its server speaks TLS. Bytes tell that at
/// once. A TLS server may also close without a byte, as any other may: only a hello tells then.
bool HttpAttempt::speaksTls(const HttpAnswer &answer, const HttpError &failure,
                            const LoopbackUrl &url, Clock::duration time) const
{
    const QByteArray address = url.address();
    if (answer.start() != HttpAnswer::Start::nothing)
        m_evidence.add(address, answer.start() == HttpAnswer::Start::tlsRecord);
    else if (failure.code != HttpError::connectionLost)
        return false;
    else if (!m_evidence.speaksTls(address))
        m_evidence.add(address, answersTlsHello(url, time, m_transfers, m_deadline));
    return *m_evidence.speaksTls(address);
}

} // namespace tidewick
