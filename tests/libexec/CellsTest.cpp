#include "libexec/cells/NumberCells.h"
#include "libexec/cells/PrintedText.h"
#include "tests/libexec/AddedText.h"

#include <QChar>
#include <QString>

#include <gtest/gtest.h>

#include <array>
#include <cwctype>

#include <locale.h>
#include <stdlib.h>

using namespace tidewick::libexec;
using namespace std::string_view_literals;

namespace
{

std::string printed(std::string_view text, bool isUtf8)
{
    return addedText([&](TextBuffer &line) { addPrinted(line, text, isUtf8); });
}

std::string joined(std::string_view commandLine)
{
    return addedText([&](TextBuffer &line) {
        line.add(commandLine);
        joinArguments(line);
    });
}

std::string percent(uint64_t ticks, double seconds)
{
    ProcessStat stat;
    stat.userTime = ticks;
    return addedText([&](TextBuffer &line) { addPercentage(line, stat, seconds, 100); });
}

std::string resident(std::string_view status)
{
    return addedText([&](TextBuffer &line) { addResident(line, status); });
}

std::string elapsed(uint64_t seconds)
{
    return addedText([&](TextBuffer &line) { addElapsed(line, seconds); });
}

} // namespace

TEST(Cells, aBufferHoldsWhatFits)
{
    std::array<char, 4> memory;
    TextBuffer text(memory);
    text.add("abc");
    text.add("def");
    text.add('g');
    EXPECT_EQ(text.view(), "abcd");
    text.replaceAll('d', 'b');
    text.removeFromEnd('b');
    EXPECT_EQ(text.view(), "abc");
    text.removeFromEnd('c');
    text.replaceAll('b', 'a');
    text.removeFromEnd('a');
    EXPECT_EQ(text.view(), "");
    EXPECT_FALSE(text.addFile(-1, "/there/is/no/such/file"));
}

TEST(Cells, localesOfUtf8)
{
    for (const char *const name :
         {"C.UTF-8", "C.utf8", "en_US.UTF-8", "de_DE.utf8@euro", "sr_RS.Utf_8@latin"})
        EXPECT_TRUE(namesUtf8(name)) << name;
    for (const char *const name :
         {"", "C", "POSIX", "UTF-8", "en_US", "de_DE@UTF-8", "ja_JP.eucJP", "en_US.UTF-16",
          "en_US.UTF-81", "en_US.UTF", "en_US.", "C.UTF-80", "C.UTF-89", "C.utf8A", "C.utf8Z",
          "C.utf8a", "C.utf8z"})
        EXPECT_FALSE(namesUtf8(name)) << name;
}

// NOLINTBEGIN(concurrency-mt-unsafe): this program has one thread
TEST(Cells, theLocaleOfTheEnvironment)
{
    const char *const names[] = {"LC_ALL", "LC_CTYPE", "LANG"};
    for (const char *const name : names)
        unsetenv(name);
    EXPECT_FALSE(isUtf8Environment());
    setenv("LANG", "C.UTF-8", 1);
    EXPECT_TRUE(isUtf8Environment());
    setenv("LC_CTYPE", "C", 1);
    EXPECT_FALSE(isUtf8Environment());
    setenv("LC_ALL", "", 1);
    EXPECT_FALSE(isUtf8Environment());
    setenv("LC_ALL", "C.UTF-8", 1);
    EXPECT_TRUE(isUtf8Environment());
    for (const char *const name : names)
        unsetenv(name);
}
// NOLINTEND(concurrency-mt-unsafe)

TEST(Cells, argumentsOnOneLine)
{
    EXPECT_EQ(joined("a\0\0b\nc\0\0"sv), "a  b c");
    EXPECT_EQ(joined("\0\0"sv), "?");
}

TEST(Cells, textsAsPsPrintsThem)
{
    EXPECT_EQ(printed("a\x01\x7f\n\xc3\xa9", false), "a...??");
    EXPECT_EQ(printed("a\x01\x7f\xc3\xa9", true), "a??\xc3\xa9");
    EXPECT_EQ(printed("\xff\x01\xc3\xa9", true), "?.??");
    EXPECT_EQ(printed("\xc3 \xc3\xa9\xe4", true), "? \xc3\xa9?");
    EXPECT_EQ(printed("\xe1\xc3\x80\xc2\x85", true), "?\xc3\x80?");
    EXPECT_EQ(printed("\xe0\x80\x80 \xed\xa0\x80 \xf4\x90\x80\x80", true), "??? ??? ????");
    EXPECT_EQ(printed("\xf0\x9f\x98\x80", true), "\xf0\x9f\x98\x80");
    EXPECT_EQ(printed("\xff b", true), "? b");
}

TEST(Cells, theFirstAndLastSequencesOfEachLength)
{
    for (const char *const text :
         {"\xc2\xa0", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf", "\xee\x80\x80", "\xef\xbf\xbd",
          "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbd"})
        EXPECT_EQ(printed(text, true), text);
    for (const char *const surrogate : {"\xed\xa0\x80", "\xed\xbf\xbf"})
        EXPECT_EQ(printed(surrogate, true), "???");
    for (const char *const noCharacter :
         {"\xef\xb7\x90", "\xef\xb7\xaf", "\xef\xbf\xbe", "\xef\xbf\xbf", "\xf4\x8f\xbf\xbf"})
        EXPECT_EQ(printed(noCharacter, true), "?");
    // After a byte that begins no sequence, no other is one.
    for (const char *const text : {"\x80\xc2\xa0", "\xc1\xc2\xa0", "\xf5\xc2\xa0"})
        EXPECT_EQ(printed(text, true), "???");
    EXPECT_EQ(printed("\xf5\x80\x80\x80\xc2\xa0", true), "??????");
}

TEST(Cells, theCharactersThatTheSystemPrints)
{
    const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (utf8 == nullptr)
        GTEST_SKIP() << "there is no locale with UTF-8";
    for (char32_t code = 1; code <= 0x10ffff; ++code) {
        const bool isKnown = QChar::category(code) != QChar::Other_NotAssigned;
        if ((code >= 0xd800 && code <= 0xdfff) || !isKnown)
            continue;
        const QByteArray text = QString::fromUcs4(&code, 1).toUtf8();
        std::array<char, 4> memory;
        TextBuffer line(memory);
        addPrinted(line, std::string_view(text.data(), size_t(text.size())), true);
        ASSERT_EQ(line.view() != "?" || code == '?', iswprint_l(wint_t(code), utf8) != 0)
            << std::hex << uint32_t(code);
    }
    freelocale(utf8);
}

TEST(Cells, numbers)
{
    EXPECT_EQ(percent(0, 0), " 0.0");
    EXPECT_EQ(percent(1259, 100), "12.5");
    EXPECT_EQ(percent(9999, 100), "99.9");
    EXPECT_EQ(percent(23, 1.14), "20.3");
    EXPECT_EQ(percent(23, 1.25), "18.4");
    EXPECT_EQ(percent(10000, 100), " 100");
    EXPECT_EQ(percent(1, 0.01), " 100");
    EXPECT_EQ(percent(123456, 100), "1234");
    EXPECT_EQ(resident("VmHWM:\t 9 kB\nVmRSS:\t     988 kB\n"), "  988");
    EXPECT_EQ(resident("VmRSS:\t 1234567 kB\n"), "1234567");
    EXPECT_EQ(resident(""), "    0");
    EXPECT_EQ(resident("VmRSS:\t x kB\n"), "    0");
    ProcessStat stat;
    stat.startTime = 5150;
    EXPECT_EQ(lifeTime(stat, "1000.25 7.00\n", 100), 948.75);
    EXPECT_EQ(lifeTime(stat, "", 100), 0);
    EXPECT_EQ(lifeTime({}, "x.25 7.00\n", 100), 0.25);
    EXPECT_EQ(lifeTime({}, "12.x 7.00\n", 100), 12);
    EXPECT_EQ(addedText([](TextBuffer &line) { addNumber(line, UINT64_MAX); }),
              "18446744073709551615");
    EXPECT_EQ(elapsed(5), "      00:05");
    EXPECT_EQ(elapsed(7265), "   02:01:05");
    EXPECT_EQ(elapsed(86400), " 1-00:00:00");
    EXPECT_EQ(elapsed(266465), " 3-02:01:05");
    EXPECT_EQ(elapsed(86400UL * 1234), "1234-00:00:00");
}
