#pragma once

#include <QStringView>
#include <QtGlobal>

#include <optional>

namespace tidewick
{

/// A decimal integer: an optional sign, then ASCII digits and nothing else, within 64 bits.
std::optional<qint64> parseInteger(QStringView text);

/// A decimal number such as "12.5", in plain or exponent form; no infinity, no NaN, nothing of more
/// than 1,000 characters.
std::optional<double> parseNumber(QStringView text);

} // namespace tidewick
