#pragma once

#include "scan/http/TlsEvidence.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>
#include <stop_token>
#include <variant>

namespace tidewick
{

/// One request. An empty `userAgent` means that the request carries no such header.
struct HttpRequest
{
    QString url;
    /// "GET", "HEAD" or "OPTIONS".
    QByteArray method;
    QByteArray userAgent;
};

/// The header fields of one response (RFC 9110, section 5), kept as they came.
class HttpHeaders
{
public:
    /// Takes one "Name: value" line, with or without its line end. A line that starts with white
    /// space continues the line before it.
    void addLine(QByteArrayView line);

    /// The value of the field, whatever the case of its name; several fields of that name join
    /// with ", ". Nothing where there is none, the empty text where the value is empty.
    /// The bytes are read as UTF-8, or as Latin-1 where they are not that. The text is a single
    /// line: each control, formatting or line separating character has become a space.
    std::optional<QString> value(QByteArrayView name) const;

private:
    QByteArray m_lines;
};

struct HttpResponse
{
    /// The most that is kept of a body, in bytes. A body that long may be truncated.
    static constexpr qsizetype bodyLimit = 10'000;

    int status = 0;
    HttpHeaders headers;
    QByteArray body;
};

/// An answer in another protocol, such as the greeting of MySQL or the error line of Redis. The
/// server is there and has answered, so it is no error; but there is no status and no header, and
/// the probe goes on with the next method.
struct NonHttpResponse
{
};

/// Why there is no response. The numbers are those of the URL loading system's error domain
/// (NSURLErrorDomain), in which the probe's rule for HTTPS is put: -1200 and -1202 ask for it.
struct HttpError
{
    enum Code : int {
        unknown = -1,
        cancelled = -999,
        timedOut = -1001,
        unsupportedUrl = -1002,
        cannotConnect = -1004,
        connectionLost = -1005,
        tooManyRedirects = -1007,
        badServerResponse = -1011,
        headersTooLong = -1103,
        secureConnectionFailed = -1200,
        certificateUntrusted = -1202,
    };
    int code = unknown;
};

using HttpOutcome = std::variant<HttpResponse, NonHttpResponse, HttpError>;

/// The edge to the network. Keeps nothing of a request for the next, except in the evidence that
/// the caller hands in.
class HttpClient
{
public:
    virtual ~HttpClient() = default;

    /// Sends the request and waits for the outcome, one second at most. Blocks the calling
    /// thread; callable from several threads at once, each with evidence of its own. A stop
    /// request, before or during the wait, ends it at once with HttpError::cancelled. Never throws.
    virtual HttpOutcome send(const HttpRequest &request, TlsEvidence &evidence,
                             const std::stop_token &stop) const = 0;
};

} // namespace tidewick
