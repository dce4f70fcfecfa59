#include "text/VisibleText.h"

namespace tidewick
{
namespace
{

bool isVisible(QChar character)
{
    switch (character.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return true;
    }
}

} // namespace

QString visibleText(QString text)
{
    for (QChar &character : text) {
        if (!isVisible(character))
            character = QChar::Space;
    }
    return text;
}

} // namespace tidewick
