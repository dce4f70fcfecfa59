#pragma once

#include "scan/http/HttpClient.h"
#include "scan/http/LoopbackUrl.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QtGlobal>

#include <cstddef>
#include <optional>
#include <utility>

#include <curl/curl.h>

namespace tidewick
{

/// What comes back for one request, taken in by the callbacks of its handle. Ends the transfer as
/// soon as it has what it needs.
class HttpAnswer
{
public:
    /// How the answer began.
    enum class Start { nothing, tlsRecord, other };

    /// Of the request that `easy` stands for.
    HttpAnswer(CURL *easy, LoopbackUrl url, const QByteArray &method);
    Q_DISABLE_COPY_MOVE(HttpAnswer)

    /// The headers of the response proper are all there.
    bool hasHead() const { return m_hasHead; }
    bool headersAreTooLong() const;
    /// The response is there, though the transfer was ended before its time.
    bool hasEnough() const { return m_hasHead && (isSwitch() || !m_takesBody || bodyIsFull()); }
    /// What came is no HTTP.
    bool isNonHttp() const { return !m_nonHttp.isEmpty(); }
    Start start() const;

    /// Where to go instead; nothing where this is the answer.
    const std::optional<LoopbackUrl> &redirect() const { return m_redirect; }
    HttpResponse takeResponse() { return std::move(m_response); }
    int status() const { return m_response.status; }

private:
    bool bodyIsFull() const { return m_response.body.size() == HttpResponse::bodyLimit; }
    /// The one interim status after which no HTTP follows (RFC 9110, section 15.2.2).
    bool isSwitch() const { return m_response.status == 101; }

    static size_t takeHeader(char *data, size_t size, size_t count, void *self);
    static size_t takeBody(char *data, size_t size, size_t count, void *self);
    /// Each false where the transfer is to end.
    bool addHeader(QByteArrayView line);
    bool endHead();
    bool addBody(QByteArrayView bytes);
    bool addNonHttp(QByteArrayView bytes);

    CURL *m_easy;
    LoopbackUrl m_url;
    bool m_takesBody;
    HttpResponse m_response;
    std::optional<LoopbackUrl> m_redirect;
    /// No more of it than start() looks at.
    QByteArray m_nonHttp;
    size_t m_headerBytes = 0;
    bool m_expectsStatusLine = true;
    bool m_hasHead = false;
};

} // namespace tidewick
