#include "tests/scan/http/HttpExchange.h"

#include "scan/http/CurlHttpClient.h"

#include <gtest/gtest.h>

#include <utility>
#include <variant>

using tidewick::CurlHttpClient;
using tidewick::HttpError;
using tidewick::HttpOutcome;
using tidewick::HttpResponse;
using tidewick::NonHttpResponse;
using tidewick::TlsEvidence;

HttpOutcome send(const QString &url, const QByteArray &method, const QByteArray &userAgent,
                 const std::stop_token &stop)
{
    TlsEvidence evidence;
    return CurlHttpClient().send({url, method, userAgent}, evidence, stop);
}

int errorOf(const HttpOutcome &outcome)
{
    if (std::holds_alternative<NonHttpResponse>(outcome))
        return nonHttp;
    const auto *error = std::get_if<HttpError>(&outcome);
    return error == nullptr ? 0 : error->code;
}

HttpResponse responseOf(const HttpOutcome &outcome)
{
    const auto *response = std::get_if<HttpResponse>(&outcome);
    EXPECT_NE(response, nullptr) << "error " << errorOf(outcome);
    return response == nullptr ? HttpResponse{} : *response;
}

QByteArray ok(const QByteArray &body, const QByteArray &headers)
{
    return "HTTP/1.1 200 OK\r\n" + headers + "Content-Length: " + QByteArray::number(body.size()) +
           "\r\n\r\n" + body;
}

QByteArray redirectTo(const QByteArray &location, int status)
{
    return "HTTP/1.1 " + QByteArray::number(status) +
           " Go\r\nServer: first\r\nLocation: " + location + "\r\nContent-Length: 4\r\n\r\nbody";
}

LoopbackServer::Behaviour logging(RequestLog &log, LoopbackServer::Behaviour answer)
{
    return [&log, answer = std::move(answer)](LoopbackConnection &connection) {
        log.add(connection.readHead());
        answer(connection);
    };
}

LoopbackServer::Behaviour sending(const QByteArray &bytes)
{
    return [bytes](LoopbackConnection &connection) {
        connection.send(bytes);
    };
}

LoopbackServer::Behaviour flooding(const QByteArray &start, const QByteArray &more)
{
    return [start, more](LoopbackConnection &connection) {
        connection.readHead();
        connection.send(start);
        while (connection.send(more)) {
        }
    };
}

LoopbackServer::Behaviour stallingAfter(const QByteArray &start)
{
    return [start](LoopbackConnection &connection) {
        connection.readHead();
        connection.send(start);
        connection.hold();
    };
}
