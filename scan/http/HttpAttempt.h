#pragma once

#include "scan/http/CurlTransfers.h"
#include "scan/http/HttpAnswer.h"
#include "scan/http/HttpClient.h"
#include "scan/http/LoopbackUrl.h"

#include <QByteArray>

#include <optional>
#include <stop_token>

namespace tidewick
{

/// One request with its redirects and its TLS hello, all within one second.
class HttpAttempt
{
public:
    /// `authorities` as newRequest() takes it.
    HttpAttempt(QByteArray authorities, const std::stop_token &stop);

    HttpOutcome run(const HttpRequest &request) const;

private:
    HttpOutcome outcome(HttpAnswer &answer, const std::optional<HttpError> &error,
                        const LoopbackUrl &url) const;
    bool speaksTls(const LoopbackUrl &url) const;

    QByteArray m_authorities;
    std::stop_token m_stop;
    CurlTransfers m_transfers;
    CurlTransfers::Clock::time_point m_deadline;
};

} // namespace tidewick
