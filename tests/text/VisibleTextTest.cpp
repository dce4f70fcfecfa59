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
                    VisibleRow{"marksBetweenWhatCannotBeSeen",
                               u"a\u0301\u0301\u200b\u0301\u0301\u200b\u0301\u0301",
                               u"a\u0301\u0301 \u0301\u0301 \u0301\u0301"},
                    VisibleRow{"halfAPair", u"a\xd83d", u"a\ufffd"}),
    rowName);

TEST(VisibleLines, keepsLineFeedsAndNoOtherNewline)
{
    EXPECT_EQ(visibleLines(QStringLiteral("a\nb\r\nc\u2028d\u2029e\u0085f\vg")),
              QStringLiteral("a\nb \nc d e f g"));
}
