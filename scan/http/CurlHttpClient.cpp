#include "scan/http/CurlHttpClient.h"

#include "scan/http/BrokenPipeGuard.h"
#include "scan/http/CurlMultiPool.h"
#include "scan/http/HttpAttempt.h"

#include <QFile>

#include <curl/curl.h>

namespace tidewick
{

CurlHttpClient::CurlHttpClient(const QString &authorities)
    : m_authorities(QFile::encodeName(authorities)), m_multis(std::make_shared<CurlMultiPool>())
{
}

HttpOutcome CurlHttpClient::send(const HttpRequest &request, TlsEvidence &evidence,
                                 const std::stop_token &stop) const
{
    static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (ready != CURLE_OK)
        return HttpError{};
    const BrokenPipeGuard guard;
    return HttpAttempt(m_authorities, *m_multis, evidence, stop).run(request);
}

} // namespace tidewick
