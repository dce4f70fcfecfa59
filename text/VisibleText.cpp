#include "text/VisibleText.h"

#include <QList>

namespace tidewick
{
namespace
{

bool isVisible(char32_t character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

QString visible(const QString &text, bool keepsLineFeeds)
{
    QString result;
    result.reserve(text.size());
    for (const char32_t character : text.toUcs4()) {
        const bool stays = isVisible(character) || (keepsLineFeeds && character == U'\n');
        result += QChar::fromUcs4(stays ? character : U' ');
    }
    return result;
}

} // namespace

QString visibleText(const QString &text)
{
    return visible(text, false);
}

QString visibleLines(const QString &text)
{
    return visible(text, true);
}

} // namespace tidewick
