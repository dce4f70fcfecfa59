// The popover on an X server, with the user's mouse.

#include "platform/window/PopoverWindow.h"
#include "platform/window/ToplevelSeat.h"
#include "tests/platform/x11/OtherProgram.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QScreen>
#include <QStyleHints>
#include <QWindow>

#include <initializer_list>

using namespace tidewick;

namespace
{

constexpr QSize size(480, 540);
constexpr QPoint item(640, 15);
constexpr QPoint besideItem(400, 36);

/// A screen of 1280x800 with a bar at the top.
class X11Popover : public testing::Test
{
protected:
    X11Popover()
    {
        qputenv("QT_QUICK_BACKEND", "software");
        reserve({0, 30, 1280, 770});
        useInput(QStringLiteral("mousemove 900 700"));
        window.emplace([this] { return hasItem; });
        window->setContentSize(size);
        window->setBehavior(PopoverBehavior::transient);
    }
    ~X11Popover() override
    {
        useInput(QStringLiteral("mouseup 1"));
        window.reset();
        other.removeProperty("_NET_WORKAREA");
    }

    /// What the bars leave free from now on.
    void reserve(const QRect &free)
    {
        other.setProperty("_NET_WORKAREA", {uint32_t(free.x()), uint32_t(free.y()),
                                            uint32_t(free.width()), uint32_t(free.height())});
        ASSERT_TRUE(waitUntil(
            [&] { return QGuiApplication::primaryScreen()->availableGeometry() == free; }));
    }
    void show(const std::optional<ClickEvent> &event)
    {
        window->show(event);
        ASSERT_TRUE(waitUntil([this] { return window->isExposed(); }));
    }
    void showBesideItem()
    {
        show(ClickEvent{.position = item});
        activate();
    }
    bool closes()
    {
        return waitUntil([this] { return !window->isShown(); });
    }
    bool staysOpenFor(int milliseconds)
    {
        return !waitUntil([this] { return !window->isShown(); }, milliseconds);
    }
    /// Where the X server has it.
    bool isAt(QPoint place)
    {
        return waitUntil([&] { return other.placeOf(xcb_window_t(window->winId())) == place; });
    }
    void push(QPoint offset)
    {
        const auto id = xcb_window_t(window->winId());
        other.moveWindow(id, besideItem + offset);
        ASSERT_EQ(other.placeOf(id), besideItem + offset);
    }
    bool comesBackAfterAPushOf(QPoint offset)
    {
        push(offset);
        return isAt(besideItem);
    }
    bool staysAfterAPushOf(QPoint offset)
    {
        push(offset);
        const auto id = xcb_window_t(window->winId());
        return !waitUntil([&] { return other.placeOf(id) == besideItem; }, 300);
    }
    /// Gives it the keyboard.
    void activate()
    {
        window->becomeKey();
        ASSERT_TRUE(waitUntil([this] { return window->isActive(); }));
    }

    OtherProgram other;
    bool hasItem = true;
    std::optional<PopoverWindow> window;
};

} // namespace

TEST_F(X11Popover, opensBesideItsItem)
{
    EXPECT_FALSE(window->isShown());
    showBesideItem();
    EXPECT_TRUE(window->isShown());
    EXPECT_TRUE(isAt(besideItem));
    EXPECT_EQ(window->size(), size);
    EXPECT_EQ(window->title(), QStringLiteral("Tidewick"));
    const auto flags = window->flags();
    EXPECT_TRUE(flags.testFlag(Qt::FramelessWindowHint));
    EXPECT_TRUE(flags.testFlag(Qt::WindowStaysOnTopHint));
    const auto states = other.atoms(xcb_window_t(window->winId()), "_NET_WM_STATE");
    EXPECT_TRUE(states.contains("_NET_WM_STATE_SKIP_TASKBAR"));
}

TEST_F(X11Popover, opensWhereItsItemWasLast)
{
    showBesideItem();
    window->performClose();
    EXPECT_FALSE(window->isShown());
    show(std::nullopt);
    EXPECT_TRUE(isAt(besideItem));
}

TEST_F(X11Popover, opensBesideThePointerOfAClick)
{
    useInput(QStringLiteral("mousemove 700 400 click 1"));
    show(ClickEvent{});
    EXPECT_TRUE(isAt({198, 36})) << "on a bar in the middle of the screen, beside the pointer";
}

TEST_F(X11Popover, pointerOnTheMenuIsNotOnTheItem)
{
    showBesideItem();
    window->performClose();
    useInput(QStringLiteral("mousemove 900 300 click 1"));
    show(ClickEvent{.position = std::nullopt, .isInMenu = true});
    EXPECT_TRUE(isAt(besideItem));
}

TEST_F(X11Popover, staysBesideItsItemWhenABarChanges)
{
    showBesideItem();
    ASSERT_TRUE(isAt(besideItem));
    reserve({0, 50, 1280, 750});
    EXPECT_TRUE(isAt({400, 56}));
    window->performClose();
    const QPoint closed = window->position();
    reserve({0, 30, 1280, 770});
    EXPECT_FALSE(waitUntil([&] { return window->position() != closed; }, 200));
}

TEST_F(X11Popover, isPutBackFiveTimesWhereAWindowManagerPushesItOff)
{
    showBesideItem();
    ASSERT_TRUE(isAt(besideItem));
    for (const QPoint offset :
         {QPoint(2, 0), QPoint(-2, 0), QPoint(0, 20), QPoint(0, -2), QPoint(20, 20)})
        EXPECT_TRUE(comesBackAfterAPushOf(offset)) << offset.x() << ' ' << offset.y();
    EXPECT_TRUE(staysAfterAPushOf({20, 20})) << "it insists";
    window->performClose();
    showBesideItem();
    ASSERT_TRUE(isAt(besideItem));
    EXPECT_TRUE(comesBackAfterAPushOf({-20, 20})) << "it is another showing";
}

TEST_F(X11Popover, isNotPutBackWhereItsPlaceIsRounded)
{
    showBesideItem();
    ASSERT_TRUE(isAt(besideItem));
    EXPECT_TRUE(staysAfterAPushOf({1, -1}));
}

TEST_F(X11Popover, isNotPutBackWhereTheUserMovesIt)
{
    showBesideItem();
    ASSERT_TRUE(isAt(besideItem));
    EXPECT_FALSE(waitUntil([] { return false; }, 1000));
    EXPECT_TRUE(staysAfterAPushOf({20, 20}));
}

TEST_F(X11Popover, pressElsewhereClosesIt)
{
    // The place of a click is the item's when it opens next, so each is elsewhere.
    for (const char *press : {"1200 700 click 1", "100 700 click 2", "1200 300 click 3"}) {
        showBesideItem();
        useInput(QStringLiteral("mousemove ") + QLatin1String(press));
        EXPECT_TRUE(closes()) << press;
    }
}

TEST_F(X11Popover, pressOnItselfDoesNotCloseIt)
{
    showBesideItem();
    ASSERT_TRUE(isAt(besideItem));
    useInput(QStringLiteral("mousemove 640 300 click 1"));
    EXPECT_TRUE(staysOpenFor(300));
}

TEST_F(X11Popover, pressOnAnotherWindowOfOursDoesNotCloseIt)
{
    QWindow settings;
    settings.setGeometry(1000, 600, 200, 150);
    settings.show();
    ASSERT_TRUE(waitUntil([&] { return settings.isExposed(); }));
    showBesideItem();
    useInput(QStringLiteral("mousemove 1100 700 click 1"));
    EXPECT_TRUE(staysOpenFor(300));
    settings.hide();
    useInput(QStringLiteral("click 1"));
    EXPECT_TRUE(closes());
}

TEST_F(X11Popover, pressBeforeItIsTransientDoesNotCloseIt)
{
    window.emplace([] { return true; });
    window->setContentSize(size);
    showBesideItem();
    useInput(QStringLiteral("mousemove 1200 700 click 1"));
    EXPECT_TRUE(staysOpenFor(300));
}

TEST_F(X11Popover, pressBeforeItOpensDoesNotCloseIt)
{
    useInput(QStringLiteral("mousemove 640 15 mousedown 1"));
    showBesideItem();
    EXPECT_TRUE(staysOpenFor(300));
}

TEST_F(X11Popover, clickOnItsItemThatClosedItDoesNotOpenItAgain)
{
    // On the item, near it on no bar, and on the bar, where it may be by now.
    for (const char *place : {"640 15", "620 33", "900 15"}) {
        showBesideItem();
        useInput(QStringLiteral("mousemove ") + QLatin1String(place) +
                 QStringLiteral(" mousedown 1"));
        ASSERT_TRUE(closes());
        useInput(QStringLiteral("mouseup 1"));
        window->show(ClickEvent{.position = item});
        EXPECT_FALSE(window->isShown()) << place;
        window->show(ClickEvent{.position = item});
        EXPECT_TRUE(window->isShown()) << "the next click opens it";
        window->performClose();
    }
}

TEST_F(X11Popover, clickElsewhereThatClosedItLetsItOpenAgain)
{
    showBesideItem();
    useInput(QStringLiteral("mousemove 1200 700 mousedown 1"));
    ASSERT_TRUE(closes());
    useInput(QStringLiteral("mouseup 1"));
    window->show(ClickEvent{.position = item});
    EXPECT_TRUE(window->isShown());
}

TEST_F(X11Popover, secondPressOfADoubleClickIsStillTheSameClick)
{
    QGuiApplication::styleHints()->setMouseDoubleClickInterval(10'000);
    showBesideItem();
    useInput(QStringLiteral("mousemove 640 15 mousedown 1"));
    ASSERT_TRUE(closes());
    useInput(QStringLiteral("mouseup 1 click 1"));
    window->show(ClickEvent{.position = item});
    EXPECT_FALSE(window->isShown());
}

TEST_F(X11Popover, laterPressIsAnotherClick)
{
    QGuiApplication::styleHints()->setMouseDoubleClickInterval(50);
    showBesideItem();
    useInput(QStringLiteral("mousemove 640 15 click 1"));
    ASSERT_TRUE(closes());
    EXPECT_FALSE(waitUntil([] { return false; }, 100));
    useInput(QStringLiteral("click 1"));
    window->show(ClickEvent{.position = item});
    EXPECT_TRUE(window->isShown());
}

TEST_F(X11Popover, programOpensItThoughAPressHasJustClosedIt)
{
    showBesideItem();
    useInput(QStringLiteral("mousemove 640 15 mousedown 1"));
    ASSERT_TRUE(closes());
    window->show(std::nullopt);
    EXPECT_TRUE(window->isShown());
}

TEST_F(X11Popover, closesWhenAnotherProgramTakesTheKeyboard)
{
    showBesideItem();
    EXPECT_TRUE(staysOpenFor(400));
    other.giveKeyboard(XCB_NONE);
    EXPECT_TRUE(closes());
}

TEST_F(X11Popover, keepsOpenWhileThePointerMovesToIt)
{
    showBesideItem();
    other.giveKeyboard(XCB_NONE);
    for (int step = 0; step < 12; ++step) {
        useInput(QStringLiteral("mousemove 700 %1").arg(100 + 10 * step));
        ASSERT_TRUE(staysOpenFor(50)) << step;
    }
    EXPECT_TRUE(closes());
}

TEST_F(X11Popover, keepsOpenIfTheKeyboardComesBack)
{
    showBesideItem();
    other.giveKeyboard(XCB_NONE);
    ASSERT_TRUE(waitUntil([this] { return !window->isActive(); }));
    other.giveKeyboard(xcb_window_t(window->winId()));
    EXPECT_TRUE(staysOpenFor(400));
}

TEST_F(X11Popover, escapeClosesIt)
{
    showBesideItem();
    useInput(QStringLiteral("key space"));
    EXPECT_TRUE(staysOpenFor(300));
    useInput(QStringLiteral("key Escape"));
    EXPECT_TRUE(closes());
}

TEST_F(X11Popover, isAWindowWithAFrameWithoutAnItem)
{
    hasItem = false;
    show(std::nullopt);
    EXPECT_EQ(window->flags(), Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                   Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
    EXPECT_TRUE(isAt({794, 36}));
    useInput(QStringLiteral("mousemove 100 700 click 1"));
    EXPECT_TRUE(staysOpenFor(300));
    activate();
    other.giveKeyboard(XCB_NONE);
    EXPECT_TRUE(staysOpenFor(400));
    reserve({0, 50, 1280, 750});
    EXPECT_FALSE(waitUntil([&] { return window->position() != QPoint(794, 36); }, 200));
    window->performClose();
    showBesideItem();
    EXPECT_TRUE(window->flags().testFlag(Qt::FramelessWindowHint));
}
