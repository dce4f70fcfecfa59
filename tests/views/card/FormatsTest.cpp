#include "views/card/Formats.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <limits>

using namespace tidewick;

struct FormatRow
{
    const char *name;
    double value;
    const char *text;
};

class Memory : public testing::TestWithParam<FormatRow>
{
};

TEST_P(Memory, isShortText)
{
    EXPECT_EQ(formatMemory(GetParam().value), QString::fromUtf8(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Memory,
    testing::Values(
        FormatRow{"none", 0, "0 MB"}, FormatRow{"half", 512, "512 MB"},
        FormatRow{"roundsDown", 121.4, "121 MB"}, FormatRow{"roundsUp", 121.6, "122 MB"},
        FormatRow{"halfAboveEven", 512.5, "512 MB"}, FormatRow{"halfAboveOdd", 513.5, "514 MB"},
        FormatRow{"thresholdIsTestedBeforeRounding", 1023.6, "1024 MB"},
        FormatRow{"gigabyte", 1024, "1.0 GB"}, FormatRow{"more", 1536, "1.5 GB"},
        FormatRow{"tenthsAndAHalf", 1280, "1.2 GB"}, FormatRow{"hundred", 102400, "100.0 GB"}),
    rowName);

class Cpu : public testing::TestWithParam<FormatRow>
{
};

TEST_P(Cpu, isAWholePercentage)
{
    EXPECT_EQ(formatCpu(GetParam().value), QString::fromUtf8(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Cpu,
    testing::Values(FormatRow{"roundsDown", 12.4, "12% CPU"},
                    FormatRow{"roundsUp", 12.6, "13% CPU"},
                    FormatRow{"halfAboveEven", 12.5, "12% CPU"},
                    FormatRow{"halfAboveOdd", 13.5, "14% CPU"}, FormatRow{"little", 0.5, "0% CPU"},
                    FormatRow{"manyProcessors", 12345, "12345% CPU"},
                    FormatRow{"greatest", std::numeric_limits<double>::infinity(), "inf% CPU"}),
    rowName);

TEST(Fixed, hasRoomForTheGreatestNumber)
{
    EXPECT_EQ(formatFixed(-std::numeric_limits<double>::max(), 1).size(), 312);
}

class Uptime : public testing::TestWithParam<FormatRow>
{
};

TEST_P(Uptime, isShortText)
{
    EXPECT_EQ(formatElapsed(GetParam().value), QString::fromUtf8(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Uptime,
    testing::Values(FormatRow{"now", 0, "<1m"}, FormatRow{"beforeItsStart", -100, "<1m"},
                    FormatRow{"lastSecond", 59, "<1m"}, FormatRow{"almostAMinute", 59.999, "<1m"},
                    FormatRow{"minute", 60, "1m"}, FormatRow{"truncatedMinutes", 119.9, "1m"},
                    FormatRow{"lastMinute", 3599.9, "59m"}, FormatRow{"hour", 3600, "1h"},
                    FormatRow{"hourAndLessThanAMinute", 3659, "1h"},
                    FormatRow{"hourAndAMinute", 3660, "1h 1m"},
                    FormatRow{"hoursAndMinutes", 7500, "2h 5m"},
                    FormatRow{"lastHour", 86399, "23h 59m"}, FormatRow{"day", 86400, "1d"},
                    FormatRow{"days", 400 * 86400.0, "400d"}),
    rowName);

TEST(Uptime, isEmptyWithoutAStart)
{
    EXPECT_EQ(formatUptime(std::nullopt), QString());
}

TEST(Uptime, countsFromTheStart)
{
    const QDateTime now = QDateTime::currentDateTime();
    EXPECT_EQ(formatUptime(now.addSecs(-125), now), QStringLiteral("2m"));
    EXPECT_EQ(formatUptime(now.addSecs(-7265)), QStringLiteral("2h 1m"));
}

TEST(UptimeDeathTest, whatIsNotFiniteEndsTheProgram)
{
    EXPECT_DEATH(formatElapsed(std::numeric_limits<double>::infinity()), "not finite");
    EXPECT_DEATH(formatElapsed(std::numeric_limits<double>::quiet_NaN()), "not finite");
}

TEST(UptimeDeathTest, whatDoesNotFitEndsTheProgram)
{
    EXPECT_DEATH(formatElapsed(1e30), "64 bits");
    EXPECT_DEATH(formatElapsed(86400 * 0x1p63), "64 bits");
    EXPECT_EQ(formatElapsed(86400 * 0x1p62), QStringLiteral("4611686018427387904d"));
}
