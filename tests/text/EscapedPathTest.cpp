#include "text/EscapedPath.h"

#include <gtest/gtest.h>

using namespace tidewick;

namespace
{

struct EscapedPathRow
{
    const char *name;
    const char *printed;
    std::optional<QString> path;
};

class EscapedPath : public testing::TestWithParam<EscapedPathRow>
{
};

} // namespace

TEST_P(EscapedPath, isReadWhereItIsUnambiguous)
{
    EXPECT_EQ(unescapedPath(QString::fromUtf8(GetParam().printed)), GetParam().path);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, EscapedPath,
    testing::Values(EscapedPathRow{"plain", "/srv/my app", QStringLiteral("/srv/my app")},
                    EscapedPathRow{"empty", "", QStringLiteral("")},
                    EscapedPathRow{"controls", "/\\b\\t\\n\\f\\r", QStringLiteral("/\b\t\n\f\r")},
                    EscapedPathRow{"backslash", "/a\\\\nb", QStringLiteral("/a\\nb")},
                    EscapedPathRow{"bytes", "/caf\\xc3\\xa9", QStringLiteral("/caf\u00e9")},
                    EscapedPathRow{"characters", "/caf\xc3\xa9", QStringLiteral("/caf\u00e9")},
                    EscapedPathRow{"caretAtTheEnd", "/a^", QStringLiteral("/a^")},
                    EscapedPathRow{"caretAndSmallLetter", "/^a", QStringLiteral("/^a")},
                    EscapedPathRow{"caretAndLetter", "/^A", std::nullopt},
                    EscapedPathRow{"caretAndBackslash", "/^\\", std::nullopt},
                    EscapedPathRow{"bytesThatAreNoText", "/\\xff", std::nullopt},
                    EscapedPathRow{"noByte", "/\\x00", std::nullopt},
                    EscapedPathRow{"unknownEscape", "/\\q", std::nullopt},
                    EscapedPathRow{"halfAnEscape", "/\\x4", std::nullopt},
                    EscapedPathRow{"oneDigit", "/\\x4g", std::nullopt},
                    EscapedPathRow{"caretAndWhatFollowsTheLetters", "/^`", QStringLiteral("/^`")},
                    EscapedPathRow{"caretAndTheFirstOfThem", "/^@", std::nullopt},
                    EscapedPathRow{"caretAndTheLastOfThem", "/^_", std::nullopt},
                    EscapedPathRow{"sign", "/\\x+4", std::nullopt},
                    EscapedPathRow{"backslashAtTheEnd", "/\\", std::nullopt}),
    [](const testing::TestParamInfo<EscapedPathRow> &info) { return info.param.name; });
