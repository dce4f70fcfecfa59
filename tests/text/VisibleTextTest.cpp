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
                    VisibleRow{"halfAPair", u"a\xd83d", u"a\ufffd"}),
    rowName);

TEST(VisibleLines, keepsLineFeedsAndNoOtherNewline)
{
    EXPECT_EQ(visibleLines(QStringLiteral("a\nb\r\nc\u2028d\u2029e\u0085f\vg")),
              QStringLiteral("a\nb \nc d e f g"));
}
