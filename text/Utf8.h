#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace tidewick
{

/// Strict UTF-8 (RFC 3629): nothing where a single byte is out of place. A byte order mark is text.
std::optional<QString> decodeUtf8(const QByteArray &bytes);

} // namespace tidewick
