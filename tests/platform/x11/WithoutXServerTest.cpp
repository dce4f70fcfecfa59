#include "platform/session/ActivationToken.h"
#include "platform/tray/TrayIconWindow.h"
#include "platform/tray/X11Tray.h"
#include "platform/window/BackdropBlur.h"
#include "platform/window/PointerButtons.h"
#include "platform/window/TaskbarEntry.h"
#include "platform/x11/StartupNotification.h"
#include "platform/x11/X11Connection.h"

#include <gtest/gtest.h>

#include <QQuickWindow>

using namespace tidewick;

TEST(WithoutAnXServer, thereIsNoConnection)
{
    X11Connection connection([](const xcb_generic_event_t & /*event*/) {});
    EXPECT_FALSE(connection.isOpen());
    connection.sync();
}

TEST(WithoutAnXServer, thereIsNoTray)
{
    const X11Tray tray;
    EXPECT_FALSE(tray.isPresent());
    TrayIconWindow icon(1, [](int side) { return QImage(side, side, QImage::Format_RGB32); });
    icon.update();
}

TEST(WithoutAnXServer, noPressIsHeard)
{
    PointerButtons buttons;
    EXPECT_FALSE(buttons.canHear());
    EXPECT_FALSE(buttons.isClicking());
    buttons.sync();
}

TEST(WithoutAnXServer, nothingIsComposedOrBlurred)
{
    EXPECT_FALSE(isScreenComposited());
    EXPECT_FALSE(isBlurOffered());
}

TEST(WithoutAnXServer, nobodyIsToldOfStartsAndTaskbars)
{
    endStartup("launcher_TIME1");
    QWindow window;
    hideFromTaskbars(window);
    qputenv("XDG_ACTIVATION_TOKEN", "older");
    {
        const ActivationToken none({});
        EXPECT_EQ(qgetenv("XDG_ACTIVATION_TOKEN"), "older");
    }
    EXPECT_FALSE(qEnvironmentVariableIsSet("XDG_ACTIVATION_TOKEN"));
}
