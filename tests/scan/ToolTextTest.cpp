#include "scan/ToolText.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

using namespace tidewick;

struct Utf8Row
{
    const char *name;
    QByteArray bytes;
    bool isValid;
};

class StrictUtf8 : public testing::TestWithParam<Utf8Row>
{
};

TEST_P(StrictUtf8, acceptsWholeValidTextOnly)
{
    const auto text = decodeUtf8(GetParam().bytes);
    ASSERT_EQ(text.has_value(), GetParam().isValid);
    EXPECT_TRUE(!text || text->toUtf8() == GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(Rows, StrictUtf8,
                         testing::Values(Utf8Row{"empty", "", true},
                                         Utf8Row{"ascii", "abc\n", true},
                                         Utf8Row{"twoToFourBytes", "ü€😀", true},
                                         Utf8Row{"zeroByte", QByteArray("a\0b", 3), true},
                                         Utf8Row{"byteOrderMarkIsText",
                                                 "\xef\xbb\xbf"
                                                 "n",
                                                 true},
                                         Utf8Row{"strayContinuation", "a\x80z", false},
                                         Utf8Row{"latin1", "M\xfcller", false},
                                         Utf8Row{"overlong", "\xc0\xaf", false},
                                         Utf8Row{"surrogate", "\xed\xa0\x80", false},
                                         Utf8Row{"beyondUnicode", "\xf4\x90\x80\x80", false},
                                         Utf8Row{"cutShortAtTheEnd", "abc\xe2\x82", false}),
                         rowName);

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
    EXPECT_EQ(splitLines(u"a\r\nb\n"), QList<QStringView>({u"a", u"", u"b", u""}));
}

struct NumberRow
{
    const char *name;
    const char16_t *text;
    std::optional<double> number;
};

class Number : public testing::TestWithParam<NumberRow>
{
};

TEST_P(Number, isReadOrRefused)
{
    EXPECT_EQ(parseNumber(GetParam().text), GetParam().number);
}

TEST(LongNumber, ofMegabytesIsRefusedUnread)
{
    EXPECT_EQ(parseNumber(QString(1000, u'0')), 0);
    EXPECT_EQ(parseNumber(QString(1001, u'0')), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Number,
    testing::Values(NumberRow{"integer", u"123904", 123904}, NumberRow{"decimal", u"12.5", 12.5},
                    NumberRow{"zero", u"0.0", 0}, NumberRow{"negative", u"-1.5", -1.5},
                    NumberRow{"exponent", u"1e3", 1000}, NumberRow{"empty", u"", std::nullopt},
                    NumberRow{"text", u"x", std::nullopt},
                    NumberRow{"trailingText", u"1.5x", std::nullopt},
                    NumberRow{"commaDecimal", u"1,5", std::nullopt},
                    NumberRow{"infinity", u"inf", std::nullopt},
                    NumberRow{"overflow", u"1e999", std::nullopt},
                    NumberRow{"notANumber", u"nan", std::nullopt}),
    rowName);
