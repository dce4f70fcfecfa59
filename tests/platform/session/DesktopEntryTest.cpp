#include "platform/session/DesktopEntry.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

using namespace tidewick;

namespace
{

const QString exec = QStringLiteral("Exec");

} // namespace

TEST(DesktopEntry, readsTheValuesOfItsOwnGroup)
{
    const DesktopEntry entry("# Exec=comment\nExec=before\n[Desktop Entry]\nExec = a b \n"
                             "Exec=second\nHidden\n=no key\n[Desktop Action x]\nIcon=other\n");
    EXPECT_EQ(entry.value(exec), QStringLiteral("a b"));
    EXPECT_EQ(entry.value(QStringLiteral("Hidden")), std::nullopt);
    EXPECT_EQ(entry.value(QStringLiteral("Icon")), std::nullopt);
}

TEST(DesktopEntry, keepsWhatNobodySets)
{
    DesktopEntry entry("# mine\n[Desktop Entry]\nX-Delay=5\nName[de]=Ä\n\n[Other]\nExec=x\n");
    entry.setValue(exec, QStringLiteral("y"));
    entry.setValue(QStringLiteral("X-Delay"), QStringLiteral("6"));
    EXPECT_EQ(entry.toText(),
              "# mine\n[Desktop Entry]\nX-Delay=6\nName[de]=Ä\n\nExec=y\n[Other]\nExec=x\n");
    entry.remove(exec);
    EXPECT_EQ(entry.toText(),
              "# mine\n[Desktop Entry]\nX-Delay=6\nName[de]=Ä\n\n[Other]\nExec=x\n");
}

TEST(DesktopEntry, removesEveryLineOfAKey)
{
    DesktopEntry entry("[Desktop Entry]\nHidden=true\nName=a\nHidden=false\n");
    entry.remove(QStringLiteral("Hidden"));
    EXPECT_EQ(entry.toText(), "[Desktop Entry]\nName=a\n");
}

TEST(DesktopEntry, escapesWhatALineCannotHoldOrAReaderSkips)
{
    DesktopEntry entry;
    entry.setValue(exec, QStringLiteral("  a\\b\n\tc\r"));
    EXPECT_EQ(entry.toText(), "[Desktop Entry]\nExec=\\s a\\\\b\\n\\tc\\r\n");
}

struct TextRow
{
    const char *name;
    QByteArray text;
};

class OddDesktopEntry : public testing::TestWithParam<TextRow>
{
};

TEST_P(OddDesktopEntry, takesAValueAndGivesItBack)
{
    DesktopEntry entry(GetParam().text);
    const QString value = QStringLiteral("  a\\b\n\tc\r; %f ä");
    entry.setValue(exec, value);
    EXPECT_EQ(DesktopEntry(entry.toText()).value(exec), value);
    EXPECT_EQ(entry.toText().count("[Desktop Entry]"), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, OddDesktopEntry,
    testing::Values(TextRow{"empty", ""}, TextRow{"noLastNewline", "[Desktop Entry]\nExec=x"},
                    TextRow{"byteOrderMark", "\xef\xbb\xbf[Desktop Entry]\nExec=x\n"},
                    TextRow{"noGroup", "Exec=x\n"}, TextRow{"otherGroup", "[Other]\nExec=x\n"},
                    TextRow{"carriageReturns", "\r\n[Other]\r\n"},
                    TextRow{"carriageReturnsInItsGroup",
                            "[Desktop Entry]\r\nExec=x\r\n[Other]\r\n"},
                    TextRow{"notUtf8", QByteArray("[Desktop Entry]\nName=\xff\xfe\n\0Exec=\n", 30)},
                    TextRow{"onlyEquals", "[Desktop Entry]\n=\n==\n"}),
    rowName);

TEST(DesktopEntry, readsLinesThatEndInCarriageReturns)
{
    const DesktopEntry entry("[Desktop Entry]\r\nHidden=true\r\n[Other]\r\nExec=x\r\n");
    EXPECT_EQ(entry.value(QStringLiteral("Hidden")), QStringLiteral("true"));
    EXPECT_EQ(entry.value(exec), std::nullopt);
}

TEST(DesktopEntry, byteOrderMarkHidesNoGroup)
{
    DesktopEntry entry("\xef\xbb\xbf[Desktop Entry]\nHidden=true\n");
    EXPECT_EQ(entry.value(QStringLiteral("Hidden")), QStringLiteral("true"));
    entry.setValue(exec, QStringLiteral("x"));
    EXPECT_EQ(entry.toText(), "\xef\xbb\xbf[Desktop Entry]\nHidden=true\nExec=x\n");
}

TEST(DesktopEntry, groupEndsWithTheNextHeader)
{
    const DesktopEntry entry("[Desktop Entry]\nA=1\n[X]\nB=2\n[Y]\nC=3\n");
    EXPECT_EQ(entry.value(QStringLiteral("A")), QStringLiteral("1"));
    EXPECT_EQ(entry.value(QStringLiteral("B")), std::nullopt);
}

TEST(DesktopEntry, escapeAtTheEndIsUndone)
{
    EXPECT_EQ(DesktopEntry("[Desktop Entry]\nExec=a\\\\\n").value(exec), QStringLiteral("a\\"));
}

TEST(DesktopEntry, trailingBackslashStaysOne)
{
    EXPECT_EQ(DesktopEntry("[Desktop Entry]\nExec=a\\\n").value(exec), QStringLiteral("a\\"));
}

TEST(QuotedForExec, guardsWhatAnExecLineWouldRead)
{
    EXPECT_EQ(quotedForExec(QStringLiteral("/opt/my apps/tide$w`i\"c\\k 100%")),
              QStringLiteral("\"/opt/my apps/tide\\$w\\`i\\\"c\\\\k 100%%\""));
}
