#include "text/Lines.h"

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

} // namespace tidewick
