#pragma once

#include "scan/http/HttpClient.h"

#include <QString>
#include <QtGlobal>

#include <optional>
#include <stop_token>

namespace tidewick
{

struct ProbeResult
{
    /// An HTTP or HTTPS response arrived, or the port is a well-known development port.
    bool isAccessible = false;
    /// Of the response that ended the probe; absent where only HTTPS answered, or nothing did.
    std::optional<qint64> statusCode;
    /// What the server calls itself; never the empty text.
    std::optional<QString> serverInfo;

    bool operator==(const ProbeResult &) const = default;
};

/// Finds out whether the local listener on `port` speaks HTTP. Up to nine attempts, one after
/// another, each followed by an HTTPS check where it met TLS, and each of these a second at most.
/// Blocks: for about nine seconds where every attempt times out, for up to 18 where a server delays
/// both on purpose. Never fails. A stop request ends it early with a worthless result.
ProbeResult probeHttpService(qint64 port, const HttpClient &client, const std::stop_token &stop);

} // namespace tidewick
