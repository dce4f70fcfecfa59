#include "text/Truncated.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

using namespace tidewick;

TEST(Truncated, leavesWhatFits)
{
    EXPECT_EQ(truncated(QString(), 3), QString());
    EXPECT_EQ(truncated(QStringLiteral("abc"), 3), QStringLiteral("abc"));
}

TEST(Truncated, endsWithAnEllipsisBehindTheLimit)
{
    EXPECT_EQ(truncated(QStringLiteral("abcd"), 3), QStringLiteral("abc…"));
    EXPECT_EQ(truncated(QStringLiteral("abcd"), 0), QStringLiteral("…"));
}

TEST(Truncated, keepsNoHalfCharacter)
{
    EXPECT_EQ(truncated(QStringLiteral("ab\U0001f600c"), 3), QStringLiteral("ab…"));
    EXPECT_EQ(truncated(QStringLiteral("\U0001f600c"), 1), QStringLiteral("…"));
    EXPECT_EQ(truncated(QStringLiteral("ab\U0001f600c"), 4), QStringLiteral("ab\U0001f600…"));
}
