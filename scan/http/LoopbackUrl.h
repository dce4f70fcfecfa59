#pragma once

#include <QByteArray>

#include <optional>

namespace tidewick
{

/// An http or https URL of this machine, and nothing that must not be sent: user, password, zone
/// and fragment are left out. Equal where the same would be asked of the same host and port.
struct LoopbackUrl
{
    bool isTls = false;
    /// As isLoopbackHost() knows it, in lower case and without a dot at its end.
    QByteArray host;
    QByteArray port;
    /// What the request line names: the path and, if there is one, the query.
    QByteArray target;

    bool operator==(const LoopbackUrl &) const = default;

    /// "127.0.0.1:3000"
    QByteArray address() const { return host + ':' + port; }
    /// "http://127.0.0.1:3000/path?query"
    QByteArray text() const { return (isTls ? "https://" : "http://") + address() + target; }
};

/// The URL that the client asks for `text`; nothing where `text` is none that it may ask.
std::optional<LoopbackUrl> loopbackUrl(const QByteArray &text);

/// Where a redirect from `base` leads, `location` being an absolute or a relative reference;
/// nothing where the client may not go there.
std::optional<LoopbackUrl> redirectTarget(const LoopbackUrl &base, const QByteArray &location);

} // namespace tidewick
