#include "libexec/cells/ProcessCells.h"

#include <gtest/gtest.h>

#include <clocale>

using namespace tidewick::tools;
using namespace std::string_view_literals;

// NOLINTBEGIN(concurrency-mt-unsafe): this program has one thread
TEST(Cells, textsAsPsPrintsThem)
{
    ASSERT_NE(setlocale(LC_CTYPE, "C"), nullptr);
    EXPECT_EQ(escapeText("a\x01\x7f\n\xc3\xa9"), "a...??");
    if (setlocale(LC_CTYPE, "C.UTF-8") == nullptr)
        GTEST_SKIP() << "there is no locale with UTF-8";
    EXPECT_EQ(escapeText("a\x01\x7f\xc3\xa9"), "a??\xc3\xa9");
    EXPECT_EQ(escapeText("\xff\x01\xc3\xa9"), "?.??");
    EXPECT_EQ(escapeText("\xc3 \xc3\xa9\xe4"), "? \xc3\xa9?");
    EXPECT_EQ(escapeText("\xe1\xc3\x80\xc2\x85"), "?\xc3\x80?");
    setlocale(LC_CTYPE, "C");
    EXPECT_EQ(joinArguments("a\0\0b\nc\0\0"sv), "a  b c");
    EXPECT_EQ(joinArguments("\0\0"sv), "?");
}
// NOLINTEND(concurrency-mt-unsafe)

TEST(Cells, cellsOfNumbers)
{
    const auto percent = [](uint64_t ticks, double seconds) {
        ProcessStat stat;
        stat.userTime = ticks;
        return percentage(stat, seconds, 100);
    };
    EXPECT_EQ(percent(0, 0), " 0.0");
    EXPECT_EQ(percent(1259, 100), "12.5");
    EXPECT_EQ(percent(9999, 100), "99.9");
    EXPECT_EQ(percent(10000, 100), " 100");
    EXPECT_EQ(percent(123456, 100), "1234");
    EXPECT_EQ(residentCell("VmHWM:\t 9 kB\nVmRSS:\t     988 kB\n"), "  988");
    EXPECT_EQ(residentCell("VmRSS:\t 1234567 kB\n"), "1234567");
    EXPECT_EQ(residentCell(""), "    0");
    ProcessStat stat;
    stat.startTime = 5150;
    EXPECT_EQ(lifeTime(stat, "1000.25 7.00\n", 100), 948.75);
    EXPECT_EQ(lifeTime(stat, "", 100), 0);
    EXPECT_EQ(paddedNumber(UINT64_MAX, 1, ' '), "18446744073709551615");
    EXPECT_EQ(elapsedText(5), "      00:05");
    EXPECT_EQ(elapsedText(7265), "   02:01:05");
    EXPECT_EQ(elapsedText(266465), " 3-02:01:05");
    EXPECT_EQ(elapsedText(86400UL * 1234), "1234-00:00:00");
}
