// What the X server and other programs see of our windows.

#include "platform/session/ActivationToken.h"
#include "platform/session/DesktopAppearance.h"
#include "platform/window/BackdropBlur.h"
#include "platform/window/DesktopWindow.h"
#include "platform/window/PointerButtons.h"
#include "platform/window/TaskbarEntry.h"
#include "platform/x11/StartupNotification.h"
#include "tests/platform/x11/OtherProgram.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QQuickWindow>
#include <QScreen>

#include <array>

using namespace tidewick;

namespace
{

constexpr const char *blurProperty = "_KDE_NET_WM_BLUR_BEHIND_REGION";
constexpr const char *compositorSelection = "_NET_WM_CM_S0";

QList<uint32_t> listOf(const std::vector<quint32> &values)
{
    return {values.begin(), values.end()};
}

class X11Windows : public testing::Test
{
protected:
    ~X11Windows() override
    {
        useInput(QStringLiteral("mouseup 1 mouseup 2 mouseup 3"));
        other.removeProperty(blurProperty);
    }

    OtherProgram other;
};

} // namespace

TEST_F(X11Windows, compositorIsWhoOwnsItsSelection)
{
    EXPECT_FALSE(isScreenComposited());
    other.own(compositorSelection, true);
    EXPECT_TRUE(isScreenComposited());
    other.own(compositorSelection, false);
    EXPECT_FALSE(isScreenComposited());
}

TEST_F(X11Windows, blurIsOfferedByAPropertyOfTheRootWindow)
{
    EXPECT_FALSE(isBlurOffered());
    other.setProperty(blurProperty, {});
    EXPECT_TRUE(isBlurOffered());
    other.removeProperty(blurProperty);
    EXPECT_FALSE(isBlurOffered());
}

TEST_F(X11Windows, blurWithoutACompositorDoesNotCount)
{
    other.setProperty(blurProperty, {});
    DesktopAppearance appearance(QDBusConnection(QStringLiteral("none")));
    Surroundings last;
    appearance.observe([&last](const Surroundings &surroundings) { last = surroundings; });
    EXPECT_FALSE(last.isComposited);
    EXPECT_FALSE(last.isBlurred);
    other.own(compositorSelection, true);
    Q_EMIT qGuiApp->focusWindowChanged(nullptr);
    EXPECT_TRUE(last.isComposited);
    EXPECT_TRUE(last.isBlurred);
    other.own(compositorSelection, false);
    Q_EMIT qGuiApp->focusWindowChanged(nullptr);
    EXPECT_FALSE(last.isComposited);
    EXPECT_FALSE(last.isBlurred);
}

TEST_F(X11Windows, blurIsAskedForBehindTheWholeWindow)
{
    other.setProperty(blurProperty, {});
    QQuickWindow window;
    const BackdropBlur blur(window, 5);
    EXPECT_EQ(window.color(), QColor(Qt::transparent));
    window.setGeometry(100, 100, 200, 100);
    window.show();
    const auto region = [&] {
        return other.property(static_cast<xcb_window_t>(window.winId()), blurProperty);
    };
    EXPECT_TRUE(waitUntil([&] { return !region().isEmpty(); }));
    EXPECT_EQ(region(), (QList<uint32_t>{0, 0, 200, 100})) << "the frame has corners of its own";
    window.resize(300, 150);
    EXPECT_TRUE(waitUntil([&] { return region() == (QList<uint32_t>{0, 0, 300, 150}); }));
}

TEST_F(X11Windows, blurHasTheCornersOfAFramelessWindow)
{
    other.setProperty(blurProperty, {});
    QQuickWindow window;
    window.setFlags(Qt::FramelessWindowHint);
    const BackdropBlur blur(window, 5);
    window.setGeometry(100, 100, 200, 100);
    window.show();
    EXPECT_TRUE(waitUntil([&] {
        return other.property(static_cast<xcb_window_t>(window.winId()), blurProperty) ==
               listOf(blurRegion(QRectF(0, 0, 200, 100), 1, 5));
    }));
}

TEST_F(X11Windows, blurIsNotAskedForWhereItIsNotOffered)
{
    QQuickWindow window;
    const BackdropBlur blur(window, 5);
    window.setGeometry(100, 100, 200, 100);
    window.show();
    ASSERT_TRUE(waitUntil([&] { return window.isExposed(); }));
    EXPECT_EQ(other.property(static_cast<xcb_window_t>(window.winId()), blurProperty),
              QList<uint32_t>());
}

TEST_F(X11Windows, windowIsLeftOutOfTaskbars)
{
    QWindow window;
    window.setFlags(Qt::WindowStaysOnTopHint);
    window.create();
    hideFromTaskbars(window);
    window.show();
    ASSERT_TRUE(waitUntil([&] { return window.isExposed(); }));
    const auto states = other.atoms(static_cast<xcb_window_t>(window.winId()), "_NET_WM_STATE");
    for (const char *state :
         {"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER", "_NET_WM_STATE_ABOVE"})
        EXPECT_TRUE(states.contains(state)) << state;
}

TEST_F(X11Windows, startIsToldToHaveEnded)
{
    endStartup("launcher/tidewick_TIME1234567");
    EXPECT_EQ(other.startupTexts(),
              (QList<QByteArray>{"remove: ID=\"launcher/tidewick_TIME1234567\""}));
    endStartup({});
    EXPECT_EQ(other.startupTexts(), QList<QByteArray>());
}

TEST_F(X11Windows, activationEndsWithItsToken)
{
    {
        const ActivationToken token("launcher_TIME1");
        EXPECT_EQ(qgetenv("XDG_ACTIVATION_TOKEN"), "launcher_TIME1");
        EXPECT_EQ(other.startupTexts(), QList<QByteArray>());
    }
    EXPECT_FALSE(qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN"));
    EXPECT_EQ(other.startupTexts(), QList<QByteArray>{"remove: ID=\"launcher_TIME1\""});
}

TEST_F(X11Windows, pressesAreHeardAnywhere)
{
    PointerButtons buttons;
    ASSERT_TRUE(buttons.canHear());
    EXPECT_FALSE(buttons.isClicking());
    int presses = 0;
    QObject::connect(&buttons, &PointerButtons::pressed, &buttons, [&presses] { ++presses; });
    useInput(QStringLiteral("mousemove 900 700 mousedown 1"));
    buttons.sync();
    EXPECT_EQ(presses, 1);
    EXPECT_TRUE(buttons.isClicking());
    useInput(QStringLiteral("mousedown 3 mouseup 1"));
    buttons.sync();
    EXPECT_EQ(presses, 2);
    EXPECT_FALSE(waitUntil([&] { return !buttons.isClicking(); }, 1200)) << "the other one is down";
    useInput(QStringLiteral("mouseup 3"));
    EXPECT_TRUE(waitUntil([&] { return !buttons.isClicking(); }));
    EXPECT_EQ(presses, 2);
}

TEST_F(X11Windows, clickIsOverASecondAfterTheRelease)
{
    PointerButtons buttons;
    useInput(QStringLiteral("click 2"));
    QElapsedTimer timer;
    timer.start();
    buttons.sync();
    EXPECT_TRUE(buttons.isClicking());
    EXPECT_TRUE(waitUntil([&] { return !buttons.isClicking(); }));
    EXPECT_GE(timer.elapsed(), 900);
}

TEST_F(X11Windows, wheelIsNoButton)
{
    PointerButtons buttons;
    int presses = 0;
    QObject::connect(&buttons, &PointerButtons::pressed, &buttons, [&presses] { ++presses; });
    useInput(QStringLiteral("click 4 click 5 click 6 click 7"));
    buttons.sync();
    EXPECT_EQ(presses, 0);
    EXPECT_FALSE(buttons.isClicking());
    useInput(QStringLiteral("click 3 click 8"));
    buttons.sync();
    EXPECT_EQ(presses, 2);
}

TEST_F(X11Windows, pressesAreNotHeardThroughXWayland)
{
    qputenv("WAYLAND_DISPLAY", "wayland-0");
    EXPECT_FALSE(PointerButtons().canHear());
    qunsetenv("WAYLAND_DISPLAY");
}

TEST_F(X11Windows, serverThatDoesNotAnswerIsNone)
{
    const QByteArray display = qgetenv("DISPLAY");
    qputenv("DISPLAY", ":65000");
    EXPECT_FALSE(PointerButtons().canHear());
    qputenv("DISPLAY", display);
}

TEST_F(X11Windows, windowOfTheSettingsHasAFrameAndIsInTheMiddle)
{
    DesktopWindow window;
    window.setContentSize({400, 300});
    window.setStyleMask(WindowStyle::titledAndClosable);
    window.setTitle(QStringLiteral("Settings"));
    window.center();
    window.makeKeyAndOrderFront();
    ASSERT_TRUE(waitUntil([&] { return window.isExposed(); }));
    EXPECT_EQ(window.geometry(), QRect(439, 249, 400, 300));
    EXPECT_EQ(window.minimumSize(), QSize(400, 300));
    EXPECT_EQ(window.maximumSize(), QSize(400, 300));
    EXPECT_EQ(window.title(), QStringLiteral("Settings"));
    EXPECT_EQ(window.flags(), Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                  Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
    window.setStyleMask(WindowStyle::titled);
    EXPECT_EQ(window.flags(), Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                  Qt::WindowSystemMenuHint);
    window.setStyleMask(WindowStyle::closable);
    EXPECT_EQ(window.flags(), Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowCloseButtonHint);
}
