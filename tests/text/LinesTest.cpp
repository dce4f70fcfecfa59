#include "text/Lines.h"

#include <gtest/gtest.h>

using namespace tidewick;

TEST(SplitLines, endsALineAtEveryNewlineCharacter)
{
    const QString text = QStringLiteral("a\nb\vc\fd\re\u0085f\u2028g\u2029h");
    EXPECT_EQ(splitLines(text).size(), 8);
    for (const QStringView line : splitLines(text))
        EXPECT_EQ(line.size(), 1);
}

TEST(SplitLines, keepsEmptyLinesAndTheLastOne)
{
    EXPECT_EQ(splitLines(u""), QList<QStringView>({u""}));
    EXPECT_EQ(splitLines(u"\na"), QList<QStringView>({u"", u"a"}));
    EXPECT_EQ(splitLines(u"a\r\nb\n"), QList<QStringView>({u"a", u"", u"b", u""}));
}
