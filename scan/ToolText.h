#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringView>

#include <optional>

namespace tidewick
{

/// Strict UTF-8 (RFC 3629): nothing where a single byte is out of place. A byte order mark is text.
std::optional<QString> decodeUtf8(const QByteArray &bytes);

/// The lines of `text`. Each of LF, VT, FF, CR, NEL, LS and PS ends a line by itself, so that CR
/// before LF makes an empty line; what follows the last of them is a line too.
QList<QStringView> splitLines(QStringView text);

/// A decimal integer: an optional sign, then ASCII digits and nothing else, within 64 bits.
std::optional<qint64> parseInteger(QStringView text);

/// A decimal number such as "12.5", in plain or exponent form; no infinity, no NaN, nothing of more
/// than 1,000 characters.
std::optional<double> parseNumber(QStringView text);

} // namespace tidewick
