#include "views/card/Pulse.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QEvent>
#include <QQuickWindow>

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

class PulseTest : public testing::Test
{
protected:
    PulseTest()
    {
        QObject::connect(&pulse, &Pulse::isRunningChanged, &pulse, [this] { ++changes; });
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
