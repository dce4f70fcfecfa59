#include "text/Truncated.h"

namespace tidewick
{

QString truncated(const QString &text, qsizetype limit)
{
    if (text.size() <= limit)
        return text;
    const bool splitsPair = limit > 0 && text[limit - 1].isHighSurrogate();
    return text.first(splitsPair ? limit - 1 : limit) + QChar(0x2026);
}

} // namespace tidewick
