#include "text/VisibleText.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

using namespace tidewick;

struct VisibleRow
{
    const char *name;
    const char16_t *text;
    const char16_t *visible;
};

class VisibleText : public testing::TestWithParam<VisibleRow>
{
};

TEST_P(VisibleText, isASpaceForWhatCannotBeSeen)
{
    EXPECT_EQ(visibleText(QString::fromUtf16(GetParam().text)),
              QString::fromUtf16(GetParam().visible));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, VisibleText,
    testing::Values(VisibleRow{"plain", u"a b", u"a b"},
                    VisibleRow{"letters", u"Gr\u00fc\u00dfe", u"Gr\u00fc\u00dfe"},
                    VisibleRow{"emoji", u"\U0001f600", u"\U0001f600"},
                    VisibleRow{"lineFeed", u"a\nb", u"a b"},
                    VisibleRow{"nextLine", u"a\u0085b", u"a b"},
                    VisibleRow{"escape", u"a\x1b[31m", u"a [31m"},
                    VisibleRow{"lineSeparator", u"a\u2028b", u"a b"},
                    VisibleRow{"paragraphSeparator", u"a\u2029b", u"a b"},
                    VisibleRow{"rightToLeftOverride", u"a\u202eb", u"a b"},
                    VisibleRow{"zeroWidthSpace", u"a\u200bb", u"a b"},
                    VisibleRow{"privateUse", u"\ue0a0", u"\ue0a0"},
                    VisibleRow{"tagBeyondTheFirstPlane", u"a\U000e0041b", u"a b"},
                    VisibleRow{"beamBeyondTheFirstPlane", u"a\U0001d173b", u"a b"},
                    VisibleRow{"selectorsOfNothing", u"\ufe0fa \ufe0f\U000e0100b", u" a   b"},
                    VisibleRow{"selectorOfALook", u"\u2764\ufe0f \u845b\U000e0100",
                               u"\u2764\ufe0f \u845b\U000e0100"},
                    VisibleRow{"unassignedTag", u"a\U000e0fffb", u"a b"},
                    VisibleRow{"hangulFiller", u"a\u3164b", u"a b"},
                    VisibleRow{"graphemeJoiner", u"a\u034fb", u"a b"},
                    VisibleRow{"brailleBlank", u"a\u2800b", u"a b"},
                    VisibleRow{"fewMarks", u"e\u0302\u0301 \u05e9\u05c1\u05bc\u05b8\u0591",
                               u"e\u0302\u0301 \u05e9\u05c1\u05bc\u05b8\u0591"},
                    VisibleRow{"manyMarks", u"a\u0301\u0302\u0303\u0304\u0305\u0306b\u0307",
                               u"a\u0301\u0302\u0303\u0304b\u0307"},
                    VisibleRow{"manyMarksBeyondTheFirstPlane",
                               u"a\u20dd\U0001d167\U0001d167\U0001d167\U0001d167\U0001d167",
                               u"a\u20dd\U0001d167\U0001d167\U0001d167"},
                    VisibleRow{"manyMarksOnNothing", u"\u0301\u0301\u0301\u0301\u0301",
                               u"\u0301\u0301\u0301\u0301"},
                    VisibleRow{"marksBetweenWhatCannotBeSeen",
                               u"a\u0301\u0301\u200b\u0301\u0301\u200b\u0301\u0301",
                               u"a\u0301\u0301 \u0301\u0301 \u0301\u0301"},
                    VisibleRow{"halfAPair", u"a\xd83d", u"a\ufffd"}),
    rowName);

TEST(VisibleCharacters, knowTheEndsOfEachRangeThatCannotBeSeen)
{
    for (const char32_t character :
         {0x34fU, 0x115fU, 0x1160U, 0x17b4U, 0x17b5U, 0x180bU, 0x180fU, 0x2065U, 0x2800U, 0x3164U,
          0xfe00U, 0xfe0fU, 0xffa0U, 0xfff0U, 0xfff8U, 0xe0000U, 0xe0100U, 0xe01efU, 0xe0fffU})
        EXPECT_EQ(visibleText(QString::fromUcs4(&character, 1)), QStringLiteral(" "))
            << std::hex << static_cast<uint>(character);
    for (const char32_t character : {0x34eU,  0x350U,  0x115eU, 0x1161U, 0x17b3U,  0x17b6U, 0x180aU,
                                     0x1810U, 0x27ffU, 0x2801U, 0x3163U, 0x3165U,  0xfdffU, 0xfe10U,
                                     0xff9fU, 0xffa1U, 0xffefU, 0xfffcU, 0xdffffU, 0xe1000U})
        EXPECT_EQ(visibleText(QString::fromUcs4(&character, 1)), QString::fromUcs4(&character, 1))
            << std::hex << static_cast<uint>(character);
}

TEST(VisibleCharacters, knowTheEndsOfTheSelectors)
{
    for (const char32_t selector : {0xfe00U, 0xfe0fU, 0xe0100U, 0xe01efU}) {
        const QString text = u'a' + QString::fromUcs4(&selector, 1);
        EXPECT_EQ(visibleText(text), text) << std::hex << static_cast<uint>(selector);
    }
    for (const char32_t other : {0xe00ffU, 0xe01f0U})
        EXPECT_EQ(visibleText(u'a' + QString::fromUcs4(&other, 1)), QStringLiteral("a "));
}

TEST(VisibleLines, keepsLineFeedsAndNoOtherNewline)
{
    EXPECT_EQ(visibleLines(QStringLiteral("a\nb\r\nc\u2028d\u2029e\u0085f\vg")),
              QStringLiteral("a\nb \nc d e f g"));
}
