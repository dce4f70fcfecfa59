#include "update/UpdateSchedule.h"
#include "tests/support/TestText.h"
#include "update/UpdateCheck.h"
#include "update/UpdaterController.h"

#include <gtest/gtest.h>

using namespace tidewick;
using namespace std::chrono_literals;

struct DueRow
{
    const char *name;
    const char *lastCheck; ///< null for never
    const char *now;
    bool isDue;
};

class CheckDue : public testing::TestWithParam<DueRow>
{
};

TEST_P(CheckDue, followsTheWallClock)
{
    const auto time = [](const char *text) {
        return QDateTime::fromString(QString::fromLatin1(text), Qt::ISODate);
    };
    std::optional<QDateTime> lastCheck;
    if (GetParam().lastCheck)
        lastCheck = time(GetParam().lastCheck);
    EXPECT_EQ(isCheckDue(lastCheck, time(GetParam().now)), GetParam().isDue);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, CheckDue,
    testing::Values(DueRow{"neverChecked", nullptr, "2026-03-01T08:00:00Z", true},
                    DueRow{"justNow", "2026-03-01T08:00:00Z", "2026-03-01T08:00:00Z", false},
                    DueRow{"anHourAgo", "2026-03-01T07:00:00Z", "2026-03-01T08:00:00Z", false},
                    DueRow{"almostADay", "2026-03-01T08:00:00Z", "2026-03-02T07:59:59Z", false},
                    DueRow{"aDay", "2026-03-01T08:00:00Z", "2026-03-02T08:00:00Z", true},
                    DueRow{"afterALongSleep", "2026-03-01T08:00:00Z", "2026-03-09T08:00:00Z", true},
                    DueRow{"clockSetForward", "2026-03-01T08:00:00Z", "2036-03-01T08:00:00Z", true},
                    DueRow{"clockSetBack", "2036-03-01T08:00:00Z", "2026-03-01T08:00:00Z", true},
                    DueRow{"dayOfTwentyThreeHours", "2026-03-28T12:00:00+01:00",
                           "2026-03-29T12:00:00+02:00", false}),
    rowName);

TEST(UpdateTimes, areShortForAnAnswerAndLongForAnInstallation)
{
    const UpdaterSystem system;
    EXPECT_EQ(system.firstCheck, 5min);
    EXPECT_EQ(system.tick, 1h);
    EXPECT_EQ(system.echo, 30s);
    EXPECT_EQ(system.callTimeout, 25s);
    const UpdateRequest request{QDBusConnection(QStringLiteral("none")), {}};
    EXPECT_EQ(request.callTimeout, 25s);
    EXPECT_EQ(request.timeout, 2min);
    EXPECT_EQ(request.refreshTimeout, 5min);
    const TransactionCall installation = installationOf({});
    EXPECT_EQ(installation.callTimeout, 25s);
    EXPECT_EQ(installation.timeout, 15min);
    EXPECT_EQ(TransactionCall().timeout, 2min);
}
