#pragma once

#include "scan/http/HttpClient.h"
#include "tests/support/LoopbackServer.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <stop_token>

/// A request that takes less than this has not waited for the end of its second.
constexpr std::chrono::milliseconds afterASecond{900};

/// One request of the real client, in a probe of its own.
tidewick::HttpOutcome send(const QString &url, const QByteArray &method = "GET",
                           const QByteArray &userAgent = {}, const std::stop_token &stop = {});

/// What errorOf() says of an answer that is no HTTP.
constexpr int nonHttp = 1;

/// The error's code; 0 where there was a response.
int errorOf(const tidewick::HttpOutcome &outcome);

/// Whether errorOf() says of bytes after an interim response that they are no HTTP. libcurl 7.88
/// hands such bytes over, libcurl 8.14 refuses them. The probe goes on with the next method after
/// both.
inline bool isFaultAfterAnInterimResponse(int code)
{
    return code == nonHttp || code == tidewick::HttpError::badServerResponse;
}

/// A response with status 0 where there was none.
tidewick::HttpResponse responseOf(const tidewick::HttpOutcome &outcome);

QByteArray ok(const QByteArray &body, const QByteArray &headers = {});

QByteArray redirectTo(const QByteArray &location, int status = 302);

/// Logs each head, then answers as `answer` says.
LoopbackServer::Behaviour logging(RequestLog &log, LoopbackServer::Behaviour answer);

LoopbackServer::Behaviour sending(const QByteArray &bytes);

/// `start`, then `more` without end.
LoopbackServer::Behaviour flooding(const QByteArray &start, const QByteArray &more);

/// `start`, then nothing until the client leaves.
LoopbackServer::Behaviour stallingAfter(const QByteArray &start);

inline QByteArray number(int value)
{
    return QByteArray::number(value);
}
