#include "platform/x11/StartupNotification.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

using namespace tidewick;

struct StartupRow
{
    const char *name;
    const char *id;
    const char *text;
};

class StartupEnd : public testing::TestWithParam<StartupRow>
{
};

TEST_P(StartupEnd, namesTheSequence)
{
    EXPECT_EQ(endOfStartup(GetParam().id), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Rows, StartupEnd,
                         testing::Values(StartupRow{"plain", "shell/app_TIME7",
                                                    "remove: ID=\"shell/app_TIME7\""},
                                         StartupRow{"quote", "a\"b", "remove: ID=\"a\\\"b\""},
                                         StartupRow{"backslash", "a\\b", "remove: ID=\"a\\\\b\""}),
                         rowName);

struct PiecesRow
{
    const char *name;
    int length;
    qsizetype pieces;
};

class StartupPieces : public testing::TestWithParam<PiecesRow>
{
};

TEST_P(StartupPieces, holdTheTextAndOneZero)
{
    const QByteArray text(GetParam().length, 'x');
    const auto pieces = startupPieces(text);
    EXPECT_EQ(pieces.size(), GetParam().pieces);
    for (const QByteArray &piece : pieces)
        EXPECT_EQ(piece.size(), 20);
    EXPECT_EQ(pieces.join(), (text + '\0').leftJustified(GetParam().pieces * 20, '\0'));
}

INSTANTIATE_TEST_SUITE_P(Rows, StartupPieces,
                         testing::Values(PiecesRow{"empty", 0, 1}, PiecesRow{"one", 19, 1},
                                         PiecesRow{"zeroAlone", 20, 2}, PiecesRow{"two", 39, 2},
                                         PiecesRow{"many", 100, 6}),
                         rowName);
