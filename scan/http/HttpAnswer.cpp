#include "scan/http/HttpAnswer.h"

#include <algorithm>
#include <array>

namespace tidewick
{
namespace
{

/// Of one exchange, its interim responses included.
constexpr size_t headerLimit = size_t{256} * 1024;

bool isRedirect(int status)
{
    constexpr std::array statuses{301, 302, 303, 307, 308};
    return std::find(statuses.begin(), statuses.end(), status) != statuses.end();
}

/// Type and version, with which a TLS record starts (RFC 8446, section 5.1).
constexpr qsizetype recordStart = 3;

/// Whether a TLS record may start with `bytes`, of which there may be less than its start.
bool mayStartTlsRecord(QByteArrayView bytes)
{
    const auto isWithin = [bytes](qsizetype at, char first, char last) {
        return at >= bytes.size() || (first <= bytes[at] && bytes[at] <= last);
    };
    return isWithin(0, 20, 23) && isWithin(1, 3, 3) && isWithin(2, 0, 4);
}

} // namespace

HttpAnswer::HttpAnswer(CURL *easy, LoopbackUrl url, const QByteArray &method)
    : m_easy(easy), m_url(std::move(url)), m_takesBody(method != "HEAD")
{
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &takeHeader);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &takeBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
}

bool HttpAnswer::headersAreTooLong() const
{
    return m_headerBytes > headerLimit;
}

HttpAnswer::Start HttpAnswer::start() const
{
    if (m_headerBytes == 0 && m_nonHttp.isEmpty())
        return Start::nothing;
    const bool isTls =
        m_headerBytes == 0 && m_nonHttp.size() == recordStart && mayStartTlsRecord(m_nonHttp);
    return isTls ? Start::tlsRecord : Start::other;
}

// A callback that returns another count than it was given ends the transfer.

size_t HttpAnswer::takeHeader(char *data, size_t size, size_t count, void *self)
{
    const bool goOn = static_cast<HttpAnswer *>(self)->addHeader({data, qsizetype(size * count)});
    return goOn ? size * count : 0;
}

size_t HttpAnswer::takeBody(char *data, size_t size, size_t count, void *self)
{
    const bool goOn = static_cast<HttpAnswer *>(self)->addBody({data, qsizetype(size * count)});
    return goOn ? size * count : 0;
}

bool HttpAnswer::addHeader(QByteArrayView line)
{
    m_headerBytes += size_t(line.size());
    if (headersAreTooLong())
        return false;
    if (m_hasHead)
        return true; // a trailer
    if (line == "\r\n" || line == "\n")
        return endHead();
    if (m_expectsStatusLine)
        m_response.headers = {};
    else
        m_response.headers.addLine(line);
    m_expectsStatusLine = false;
    return true;
}

bool HttpAnswer::endHead()
{
    long status = 0;
    curl_easy_getinfo(m_easy, CURLINFO_RESPONSE_CODE, &status);
    m_response.status = int(status);
    m_expectsStatusLine = true;
    m_hasHead = status >= 200 || isSwitch();
    if (m_hasHead && isRedirect(int(status))) {
        const auto location = m_response.headers.value("Location");
        m_redirect = redirectTarget(m_url, location.value_or(QString()).toUtf8());
    }
    return !m_redirect && !hasEnough();
}

bool HttpAnswer::addBody(QByteArrayView bytes)
{
    if (!m_hasHead)
        return addNonHttp(bytes);
    m_response.body +=
        bytes.first(std::min(bytes.size(), HttpResponse::bodyLimit - m_response.body.size()));
    return !bodyIsFull();
}

bool HttpAnswer::addNonHttp(QByteArrayView bytes)
{
    m_nonHttp += bytes.first(std::min(bytes.size(), recordStart - m_nonHttp.size()));
    return m_nonHttp.size() < recordStart && mayStartTlsRecord(m_nonHttp);
}

} // namespace tidewick
