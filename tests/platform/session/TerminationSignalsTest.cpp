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
