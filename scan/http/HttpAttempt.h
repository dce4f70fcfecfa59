#pragma once

#include "scan/http/CurlTransfers.h"
#include "scan/http/HttpAnswer.h"
#include "scan/http/HttpClient.h"
#include "scan/http/LoopbackUrl.h"
#include "scan/http/TlsEvidence.h"

#include <QByteArray>

#include <optional>
#include <stop_token>

namespace tidewick
{

/// One request with its redirects and, where its end leaves it open whether the server speaks TLS,
/// a TLS hello; all within one second.
class HttpAttempt
{
public:
    /// `authorities` as newRequest() takes it. Reads `evidence` and adds to it.
    HttpAttempt(QByteArray authorities, CurlMultiPool &multis, TlsEvidence &evidence,
                const std::stop_token &stop);

    HttpOutcome run(const HttpRequest &request) const;

private:
    using Clock = CurlTransfers::Clock;

    HttpOutcome outcome(HttpAnswer &answer, const std::optional<HttpError> &error,
                        const LoopbackUrl &url, Clock::duration time) const;
    bool speaksTls(const HttpAnswer &answer, const HttpError &failure, const LoopbackUrl &url,
                   Clock::duration time) const;

    QByteArray m_authorities;
    TlsEvidence &m_evidence;
    std::stop_token m_stop;
    CurlTransfers m_transfers;
    Clock::time_point m_deadline;
};

} // namespace tidewick
