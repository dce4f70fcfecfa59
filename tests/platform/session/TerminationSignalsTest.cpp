#include "platform/session/TerminationSignals.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QDeadlineTimer>

#include <csignal>
#include <cstdlib>
#include <unistd.h>

using namespace tidewick;

namespace
{

/// The main thread has no event loop any more, as if it waited for something for ever.
[[noreturn]] void receiveWhileStuck()
{
    const TerminationSignals signals;
    raise(SIGTERM);
    raise(SIGINT);
    const QDeadlineTimer longest(60'000);
    while (!longest.hasExpired())
        usleep(1000);
    std::_Exit(1);
}

[[noreturn]] void receiveAfterwards()
{
    {
        const TerminationSignals signals;
    }
    raise(SIGTERM);
    std::_Exit(1);
}

/// How often a signal is told within so much time.
int countFor(int milliseconds, TerminationSignals &signals)
{
    int received = 0;
    QObject::connect(&signals, &TerminationSignals::received, &signals, [&] { ++received; });
    waitUntil([] { return false; }, milliseconds);
    QObject::disconnect(&signals, nullptr, &signals, nullptr);
    return received;
}

} // namespace

TEST(TerminationSignals, areToldOnTheMainThread)
{
    TerminationSignals signals;
    int received = 0;
    QObject::connect(&signals, &TerminationSignals::received, &signals, [&] { ++received; });
    raise(SIGTERM);
    EXPECT_EQ(received, 0);
    EXPECT_TRUE(waitUntil([&] { return received == 1; }));
    alarm(0);
}

TEST(TerminationSignals, areToldOnceEach)
{
    TerminationSignals signals;
    EXPECT_EQ(countFor(50, signals), 0);
    raise(SIGTERM);
    EXPECT_EQ(countFor(50, signals), 1);
    raise(SIGTERM);
    EXPECT_EQ(countFor(50, signals), 1);
    alarm(0);
}

TEST(TerminationSignals, thatWereIgnoredStayIgnored)
{
    signal(SIGHUP, SIG_IGN); // as nohup(1) does
    TerminationSignals signals;
    raise(SIGHUP);
    EXPECT_EQ(countFor(50, signals), 0);
    signal(SIGHUP, SIG_DFL);
}

TEST(TerminationSignals, endTheProgramAfterwards)
{
    EXPECT_EXIT(receiveAfterwards(), testing::KilledBySignal(SIGTERM), "");
}

TEST(TerminationSignals, endAProgramThatIsStuck)
{
    EXPECT_EXIT(receiveWhileStuck(), testing::KilledBySignal(SIGTERM), "");
}

TEST(TerminationSignals, laterOnesDoNotExtendTheTime)
{
    const TerminationSignals signals;
    raise(SIGTERM);
    alarm(3); // as if the rest of the time had passed
    raise(SIGTERM);
    EXPECT_LE(alarm(0), 3U);
}
