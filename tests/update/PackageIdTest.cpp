#include "update/PackageId.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

using namespace tidewick;

struct IdRow
{
    const char *name;
    const char *text;
    bool isValid;
};

class PackageIdText : public testing::TestWithParam<IdRow>
{
};

TEST_P(PackageIdText, isTakenOnlyWhole)
{
    const QString text = QString::fromLatin1(GetParam().text);
    const std::optional<PackageId> id = parsePackageId(text);
    EXPECT_EQ(id.has_value(), GetParam().isValid);
    if (id) {
        EXPECT_EQ(id->text(), text);
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, PackageIdText,
                         testing::Values(IdRow{"whole", "tidewick;1.0-1;amd64;stable", true},
                                         IdRow{"noData", "tidewick;1.0-1;amd64;", true},
                                         IdRow{"epoch", "tidewick;1:1.0~rc1;all;a:b", true},
                                         IdRow{"empty", "", false},
                                         IdRow{"bare", "tidewick", false},
                                         IdRow{"noName", ";1.0;amd64;x", false},
                                         IdRow{"noVersion", "tidewick;;amd64;x", false},
                                         IdRow{"fiveParts", "a;1;b;c;d", false}),
                         rowName);

TEST(PackageId, isRefusedWhereItIsUnreasonablyLong)
{
    const QString longest = QString(991, QLatin1Char('x')) + QStringLiteral(";1.0;all;");
    ASSERT_EQ(longest.size(), 1000);
    EXPECT_TRUE(parsePackageId(longest).has_value());
    EXPECT_FALSE(parsePackageId(longest + QLatin1Char('x')).has_value());
}
