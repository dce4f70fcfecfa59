#include "views/card/PressSequence.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyleHints>

#include <chrono>
#include <limits>
#include <thread>

using namespace tidewick;

namespace
{

class PressSequenceTest : public testing::Test
{
protected:
    PressSequenceTest() { presses.setWindow(&window); }
    ~PressSequenceTest() override { setInterval(int(interval)); }

    static void setInterval(int milliseconds)
    {
        QGuiApplication::styleHints()->setMouseDoubleClickInterval(milliseconds);
    }

    void sendKey(QEvent::Type type, Qt::Key key, quint64 time, bool isRepeat = false)
    {
        QKeyEvent event(type, key, Qt::NoModifier, {}, isRepeat);
        event.setTimestamp(time);
        QCoreApplication::sendEvent(&window, &event);
    }
    void repeat(Qt::Key key, quint64 time)
    {
        sendKey(QEvent::KeyRelease, key, time, true);
        sendKey(QEvent::KeyPress, key, time, true);
    }
    void click(quint64 time) { clickIn(window, time); }
    static void clickIn(QQuickWindow &window, quint64 time)
    {
        QMouseEvent event(QEvent::MouseButtonPress, {}, {}, Qt::LeftButton, Qt::LeftButton,
                          Qt::NoModifier);
        event.setTimestamp(time);
        QCoreApplication::sendEvent(&window, &event);
    }

    const quint64 interval = quint64(QGuiApplication::styleHints()->mouseDoubleClickInterval());
    const quint64 start = 100'000;
    QQuickWindow window;
    PressSequence presses;
};

class PressingKey : public PressSequenceTest, public testing::WithParamInterface<Qt::Key>
{
};

class OtherKey : public PressSequenceTest, public testing::WithParamInterface<Qt::Key>
{
};

} // namespace

TEST_P(PressingKey, beginsASequence)
{
    sendKey(QEvent::KeyPress, GetParam(), start);
    EXPECT_TRUE(presses.begins());
    sendKey(QEvent::KeyRelease, GetParam(), start + 50);
    click(start + interval);
    EXPECT_FALSE(presses.begins());
    sendKey(QEvent::KeyPress, GetParam(), start + 2 * interval + 1);
    EXPECT_TRUE(presses.begins());
}

TEST_P(PressingKey, thatStaysDownBelongsToItsFirstPress)
{
    sendKey(QEvent::KeyPress, GetParam(), start);
    EXPECT_TRUE(presses.begins());
    for (quint64 time = start + 10 * interval; time < start + 13 * interval; time += interval) {
        repeat(GetParam(), time);
        EXPECT_FALSE(presses.begins());
    }
}

TEST_P(PressingKey, thatStaysDownBelongsToItHoweverLateThatIsAsked)
{
    setInterval(0);
    sendKey(QEvent::KeyPress, GetParam(), start);
    EXPECT_TRUE(presses.begins());
    repeat(GetParam(), start + 10);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_FALSE(presses.begins());
}

INSTANTIATE_TEST_SUITE_P(Keys, PressingKey,
                         testing::Values(Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter));

TEST_P(OtherKey, isNoPress)
{
    click(start);
    EXPECT_TRUE(presses.begins());
    sendKey(QEvent::KeyPress, GetParam(), start + 3 * interval);
    click(start + 3 * interval + 1);
    EXPECT_TRUE(presses.begins());
    click(start + 6 * interval);
    repeat(GetParam(), start + 6 * interval + 1);
    EXPECT_TRUE(presses.begins());
}

INSTANTIATE_TEST_SUITE_P(Keys, OtherKey,
                         testing::Values(Qt::Key_Tab, Qt::Key_Down, Qt::Key_Shift, Qt::Key_A));

TEST_F(PressSequenceTest, endsAnIntervalAfterItsLastPress)
{
    click(start);
    EXPECT_TRUE(presses.begins());
    click(start + interval);
    EXPECT_FALSE(presses.begins());
    click(start + 2 * interval);
    EXPECT_FALSE(presses.begins());
    click(start + 3 * interval + 1);
    EXPECT_TRUE(presses.begins());
}

TEST_F(PressSequenceTest, goesOnWhereTheClockBeginsAgain)
{
    constexpr quint64 last = std::numeric_limits<quint32>::max();
    click(last);
    EXPECT_TRUE(presses.begins());
    click(interval - 1);
    EXPECT_FALSE(presses.begins());
    click(last); // which arrives late
    EXPECT_FALSE(presses.begins());
    click(interval);
    EXPECT_TRUE(presses.begins());
}

TEST_F(PressSequenceTest, withoutTimesIsOneOfThisMoment)
{
    EXPECT_TRUE(presses.begins()); // from the accessibility bus
    EXPECT_FALSE(presses.begins());
    click(0);
    EXPECT_FALSE(presses.begins());
    click(start + 100 * interval);
    EXPECT_FALSE(presses.begins()) << "the one before has no time";
}

TEST_F(PressSequenceTest, withoutADeviceRightAfterAClickBelongsToItsSequence)
{
    click(start);
    EXPECT_TRUE(presses.begins());
    EXPECT_FALSE(presses.begins()); // from the accessibility bus
}

TEST_F(PressSequenceTest, withoutTimesEndsAnIntervalAfterItsLastPress)
{
    setInterval(0);
    EXPECT_TRUE(presses.begins());
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_TRUE(presses.begins());
}

TEST_F(PressSequenceTest, pressThatNobodyAskedAboutCounts)
{
    click(start);
    click(start + interval);
    EXPECT_FALSE(presses.begins());
}

TEST_F(PressSequenceTest, isOfOneWindow)
{
    QQuickWindow other;
    int changes = 0;
    QObject::connect(&presses, &PressSequence::windowChanged, &presses, [&changes] { ++changes; });
    presses.setWindow(&other);
    presses.setWindow(&other);
    EXPECT_EQ(changes, 1);
    click(start); // in the window before
    clickIn(other, start + interval);
    EXPECT_TRUE(presses.begins());
}
