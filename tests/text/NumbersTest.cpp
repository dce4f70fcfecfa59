#include "text/Numbers.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

using namespace tidewick;

template <typename Value>
struct Row
{
    const char *name;
    const char16_t *text;
    std::optional<Value> number;
};

using NumberRow = Row<double>;
using IntegerRow = Row<qint64>;

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

class Integer : public testing::TestWithParam<IntegerRow>
{
};

TEST_P(Integer, isReadOrRefused)
{
    EXPECT_EQ(parseInteger(GetParam().text), GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Integer,
    testing::Values(IntegerRow{"plain", u"90", 90}, IntegerRow{"firstDigit", u"0", 0},
                    IntegerRow{"plus", u"+19", 19}, IntegerRow{"minus", u"-19", -19},
                    IntegerRow{"most", u"9223372036854775807", 9223372036854775807},
                    IntegerRow{"tooMany", u"9223372036854775808", std::nullopt},
                    IntegerRow{"empty", u"", std::nullopt},
                    IntegerRow{"signAlone", u"+", std::nullopt},
                    IntegerRow{"twoSigns", u"+-1", std::nullopt},
                    IntegerRow{"blank", u" 1", std::nullopt},
                    IntegerRow{"signBeforeADigit", u"1/2", std::nullopt},
                    IntegerRow{"signBehindADigit", u"1:2", std::nullopt},
                    IntegerRow{"foreignDigits", u"\u0661", std::nullopt}),
    rowName);
