#include "text/VisibleText.h"

#include <QList>

#include <algorithm>
#include <array>

namespace tidewick
{
namespace
{

/// More of them on one letter reach far beyond its line. No script needs more than a few.
constexpr int mostMarks = 4;

struct Range
{
    char32_t first;
    char32_t last;
};

/// Variation selectors choose a look of the character before, and have none of their own.
constexpr std::array selectors{Range{0xfe00, 0xfe0f}, Range{0xe0100, 0xe01ef}};

/// What has no look either, although its category says otherwise: the remaining characters with
/// Default_Ignorable_Code_Point in Unicode's DerivedCoreProperties.txt, and the Braille blank.
constexpr std::array blanks{Range{0x34f, 0x34f},    Range{0x115f, 0x1160}, Range{0x17b4, 0x17b5},
                            Range{0x180b, 0x180f},  Range{0x2065, 0x2065}, Range{0x2800, 0x2800},
                            Range{0x3164, 0x3164},  Range{0xffa0, 0xffa0}, Range{0xfff0, 0xfff8},
                            Range{0xe0000, 0xe0fff}};

template <std::size_t count>
bool isIn(const std::array<Range, count> &ranges, char32_t character)
{
    return std::any_of(ranges.begin(), ranges.end(), [character](const Range &range) {
        return character >= range.first && character <= range.last;
    });
}

enum class Look { letter, mark, selector, none };

Look lookOf(char32_t character)
{
    if (isIn(selectors, character))
        return Look::selector;
    if (isIn(blanks, character))
        return Look::none;
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return Look::none;
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
        return Look::mark;
    default:
        return Look::letter;
    }
}

QString visible(const QString &text, bool keepsLineFeeds)
{
    QString result;
    char32_t letter = U' '; // on which the next mark stands
    int marks = 0;
    for (const char32_t character : text.toUcs4()) {
        const Look look = lookOf(character);
        if (look == Look::mark || (look == Look::selector && letter != U' ')) {
            if (++marks <= mostMarks)
                result += QChar::fromUcs4(character);
            continue;
        }
        const bool stays = look == Look::letter || (keepsLineFeeds && character == U'\n');
        letter = stays ? character : U' ';
        marks = 0;
        result += QChar::fromUcs4(letter);
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
