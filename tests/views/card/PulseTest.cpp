#include "views/card/Pulse.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QEvent>
#include <QQuickWindow>

#include <algorithm>
#include <cmath>
#include <vector>

using namespace tidewick;

namespace
{

/// Keeps every event from its window but the one of a change on the screen, which is all that a
/// window gets that is minimized.
class ExposesOnly : public QObject
{
public:
    bool eventFilter(QObject * /*watched*/, QEvent *event) override
    {
        return event->type() != QEvent::Expose;
    }
};

/// A value of the pulse, and milliseconds since it began to run.
struct Seen
{
    double value = 0;
    double time = 0;
};

class PulseTest : public testing::Test
{
protected:
    PulseTest()
    {
        QObject::connect(&pulse, &Pulse::isRunningChanged, &pulse, [this] { ++changes; });
        QObject::connect(&pulse, &Pulse::valueChanged, &pulse, [this] {
            seen.push_back({pulse.value(), double(clock.nsecsElapsed()) / 1e6});
        });
    }

    /// Lets it run until it has shown a value of at most `least`.
    void runDownTo(double least)
    {
        seen.clear();
        clock.start();
        pulse.setWanted(true);
        EXPECT_TRUE(waitUntil([this, least] { return !seen.empty() && pulse.value() <= least; }));
    }

    /// When a value on the first way in is due: when half of the step to it is gone.
    double timeOf(double value) const
    {
        const double place = 1 - value - 0.5 / pulse.steps();
        const double part = place < 0.5 ? std::sqrt(place / 2) : 1 - std::sqrt((1 - place) / 2);
        return part * pulse.duration();
    }

    bool startsToRun()
    {
        return waitUntil([this] { return pulse.isRunning(); });
    }
    bool stops()
    {
        return waitUntil([this] { return !pulse.isRunning(); });
    }
    void show()
    {
        window.show();
        ASSERT_TRUE(waitUntil([this] { return window.isExposed(); }));
    }

    QQuickWindow window;
    Pulse pulse;
    QElapsedTimer clock;
    std::vector<Seen> seen;
    int changes = 0;
};

} // namespace

TEST_F(PulseTest, runsOnlyWhileItsWindowIsOnTheScreen)
{
    pulse.setWindow(&window);
    pulse.setWanted(true);
    EXPECT_FALSE(pulse.isRunning());
    window.show();
    EXPECT_TRUE(startsToRun());
    ExposesOnly filter;
    window.installEventFilter(&filter);
    window.hide();
    EXPECT_TRUE(stops());
    EXPECT_EQ(changes, 2);
}

TEST_F(PulseTest, runsOnlyWhileItIsWanted)
{
    pulse.setWindow(&window);
    show();
    EXPECT_FALSE(pulse.isRunning());
    pulse.setWanted(true);
    EXPECT_TRUE(pulse.isRunning());
    pulse.setWanted(false);
    EXPECT_FALSE(pulse.isRunning());
    EXPECT_EQ(changes, 2);
}

TEST_F(PulseTest, followsItsWindow)
{
    QQuickWindow hidden;
    show();
    pulse.setWanted(true);
    EXPECT_FALSE(pulse.isRunning());
    pulse.setWindow(&window);
    EXPECT_TRUE(pulse.isRunning());
    pulse.setWindow(&hidden);
    EXPECT_FALSE(pulse.isRunning());
}

TEST_F(PulseTest, tellsOnlyOfChanges)
{
    int wanted = 0;
    QObject::connect(&pulse, &Pulse::isWantedChanged, &pulse, [&wanted] { ++wanted; });
    pulse.setWindow(&window);
    show();
    for (const bool isWanted : {true, true, false, false})
        pulse.setWanted(isWanted);
    EXPECT_EQ(wanted, 2);
    EXPECT_EQ(changes, 2);
    EXPECT_TRUE(seen.empty()) << "no step was due";
}

TEST_F(PulseTest, movesByStepsWhenHalfOfEachIsGone)
{
    pulse.setWindow(&window);
    show();
    double leastDelay = pulse.duration();
    double leastStep = 1;
    // This process may be held up at any moment, but not always.
    for (int run = 0; run < 20 && !(leastDelay < 3 && leastStep < 1.01 / pulse.steps()); ++run) {
        runDownTo(0.6);
        for (std::size_t i = 0; i < seen.size(); ++i) {
            const double delay = seen[i].time - timeOf(seen[i].value);
            EXPECT_GE(delay, -1) << seen[i].value;
            leastDelay = std::min(leastDelay, delay);
            leastStep = std::min(leastStep, i == 0 ? 1 : seen[i - 1].value - seen[i].value);
        }
        pulse.setWanted(false);
        EXPECT_EQ(pulse.value(), 1);
    }
    EXPECT_LT(leastDelay, 3) << "milliseconds";
    EXPECT_NEAR(leastStep, 1.0 / pulse.steps(), 0.001);
}

TEST_F(PulseTest, beginsAnewEachTime)
{
    pulse.setWindow(&window);
    show();
    runDownTo(0.1);
    pulse.setWanted(false);
    double first = 0;
    for (int run = 0; run < 20 && first < 0.949; ++run) {
        seen.clear();
        pulse.setWanted(true);
        EXPECT_TRUE(waitUntil([this] { return !seen.empty(); }));
        first = seen.front().value;
        pulse.setWanted(false);
    }
    EXPECT_NEAR(first, 0.95, 0.001);
}

TEST_F(PulseTest, swingsBetweenItsEnds)
{
    pulse.setWindow(&window);
    show();
    runDownTo(1);
    EXPECT_TRUE(waitUntil([this] { return seen.back().time > 2.6 * pulse.duration(); }));
    for (const Seen &one : seen)
        EXPECT_TRUE(one.value >= 0 && one.value <= 1)
            << one.value << " after " << one.time << " ms";
}
