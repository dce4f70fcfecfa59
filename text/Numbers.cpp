#include "text/Numbers.h"

#include <QString> // defines the conversions of QStringView

#include <algorithm>
#include <cmath>

namespace tidewick
{

std::optional<qint64> parseInteger(QStringView text)
{
    const bool hasSign = text.startsWith(u'+') || text.startsWith(u'-');
    const QStringView digits = text.sliced(hasSign ? 1 : 0);
    const auto isAsciiDigit = [](QChar c) {
        return c >= u'0' && c <= u'9';
    };
    if (digits.isEmpty() || !std::all_of(digits.begin(), digits.end(), isAsciiDigit))
        return std::nullopt;
    bool fits = false;
    const qint64 number = text.toLongLong(&fits);
    return fits ? std::optional(number) : std::nullopt;
}

std::optional<double> parseNumber(QStringView text)
{
    constexpr qsizetype longest = 1000; // parsing a longer number takes seconds
    if (text.size() > longest)
        return std::nullopt;
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

} // namespace tidewick
