#pragma once

#include "scan/http/HttpClient.h"

#include <memory>

namespace tidewick
{

class CurlMultiPool;

/// Speaks HTTP/1.1, and HTTP/2 over TLS, to this machine alone: every address it connects to is a
/// loopback one. No proxy, cookie, credential or cache, whatever the environment holds.
///
/// Redirects to loopback addresses and `localhost` are followed, up to five and never to a URL that
/// was asked before; one that leads elsewhere is the response. A plain request that met a TLS
/// server ends with HttpError::secureConnectionFailed: one that was answered by a TLS record, or
/// one whose connection was closed without a byte where a TLS hello succeeds. A body that does not
/// end in time is an error, unless HttpResponse::bodyLimit bytes of it came.
class CurlHttpClient : public HttpClient
{
public:
    /// Trusts the certificate authorities of the system.
    CurlHttpClient() : CurlHttpClient(QString()) {}
    /// Trusts those in the PEM file `authorities` too.
    explicit CurlHttpClient(const QString &authorities);

    HttpOutcome send(const HttpRequest &request, TlsEvidence &evidence,
                     const std::stop_token &stop) const override;

private:
    QByteArray m_authorities;
    std::shared_ptr<CurlMultiPool> m_multis;
};

} // namespace tidewick
