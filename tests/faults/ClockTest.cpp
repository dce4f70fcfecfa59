// The clock of this program is set back and forward; the machine's stays as it is.

#include "tests/faults/FaultTest.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"
#include "views/card/Formats.h"

#include <QElapsedTimer>

#include <atomic>
#include <ctime>

#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

using namespace tidewick;
using namespace std::chrono_literals;

namespace
{

constexpr time_t day = 86400;

/// Seconds by which the wall clock was set.
std::atomic<time_t> offset = 0;

} // namespace

// These stand before the C library's in all of the program. Only the wall's clock differs.
extern "C" int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    const long result = syscall(SYS_clock_gettime, clock, time);
    if (result == 0 && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE))
        time->tv_sec += offset;
    return int(result);
}

extern "C" int gettimeofday(timeval *time, void * /*zone*/) noexcept
{
    timespec now{};
    const int result = clock_gettime(CLOCK_REALTIME, &now);
    *time = {now.tv_sec, now.tv_nsec / 1000};
    return result;
}

extern "C" time_t time(time_t *result) noexcept
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (result != nullptr)
        *result = now.tv_sec;
    return now.tv_sec;
}

namespace
{

class SetClock : public FaultTest, public testing::WithParamInterface<time_t>
{
protected:
    ~SetClock() override { offset = 0; }
};

} // namespace

TEST_P(SetClock, holdsUpNoRefreshAndSpoilsNoUptime)
{
    const auto server = serve();
    start();
    ASSERT_TRUE(tellsTheTruthAbout(*server));
    int scans = 0;
    QObject::connect(store.get(), &AppState::isLoadingChanged, store.get(),
                     [&scans](bool isLoading) { scans += isLoading ? 1 : 0; });
    store->startAutoRefresh();
    QElapsedTimer sinceStart;
    sinceStart.start();

    const QDateTime before = QDateTime::currentDateTime();
    offset = GetParam();
    ASSERT_NEAR(double(before.secsTo(QDateTime::currentDateTime())), double(GetParam()), 60)
        << "the program sees the other clock";
    const auto left = store->refreshTimer()->remainingTimeAsDuration();
    EXPECT_GT(left, 0s);
    EXPECT_LE(left, 5s);

    const auto another = serve();
    ASSERT_TRUE(waitUntil([&] { return !rowsOf(*another).isEmpty(); }, 60'000));
    EXPECT_LE(scans, 1 + sinceStart.elapsed() / AppState::refreshInterval.count())
        << "a tick is a tick";
    EXPECT_TRUE(tellsTheTruthAbout(*server));
    const auto startTime = rowsOf(*server).first().startTime;
    EXPECT_EQ(formatUptime(startTime), QStringLiteral("<1m"));
    const QDateTime now = QDateTime::currentDateTime();
    EXPECT_LT(std::abs(startTime.value_or(before).secsTo(now)), 60);
    EXPECT_LT(std::abs(store->lastRefresh().secsTo(now)), 60);
}

INSTANTIATE_TEST_SUITE_P(Rows, SetClock, testing::Values(day, -day), [](const auto &info) {
    return info.param > 0 ? "forwardByADay" : "backByADay";
});
