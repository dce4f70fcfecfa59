#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace tidewick
{

/// Strict UTF-8 (RFC 3629): nothing if any byte is invalid. A byte order mark is text.
std::optional<QString> decodeUtf8(const QByteArray &bytes);

} // namespace tidewick
