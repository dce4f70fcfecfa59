#include "scan/ToolText.h"

#include <QStringDecoder>

#include <algorithm>
#include <cmath>

namespace tidewick
{
namespace
{

bool isNewline(QChar character)
{
    const char16_t c = character.unicode();
    return (c >= u'\n' && c <= u'\r') || c == u'\u0085' || c == u'\u2028' || c == u'\u2029';
}

} // namespace

std::optional<QString> decodeUtf8(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                     QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(std::move(text));
}

QList<QStringView> splitLines(QStringView text)
{
    QList<QStringView> lines;
    qsizetype start = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isNewline(text[i])) {
            lines.append(text.sliced(start, i - start));
            start = i + 1;
        }
    }
    lines.append(text.sliced(start));
    return lines;
}

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
    constexpr qsizetype longest = 1000; // beyond it reading takes seconds
    if (text.size() > longest)
        return std::nullopt;
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

} // namespace tidewick
