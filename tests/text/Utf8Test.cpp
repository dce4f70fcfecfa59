#include "text/Utf8.h"
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
