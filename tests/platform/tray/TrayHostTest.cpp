#include "platform/tray/TrayHost.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

using namespace tidewick;

struct HostRow
{
    const char *name;
    const char *process;
    TrayHost host;
};

class TrayHostOf : public testing::TestWithParam<HostRow>
{
};

TEST_P(TrayHostOf, isKnownByItsProcess)
{
    EXPECT_EQ(trayHost(QString::fromUtf8(GetParam().process)), GetParam().host);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TrayHostOf,
    testing::Values(
        HostRow{"gnome", "gnome-shell", {.number = NumberStyle::label, .countsPixels = true}},
        HostRow{"ayatana",
                "ayatana-indicat",
                {.number = NumberStyle::label,
                 .takesPixels = false,
                 .activates = false,
                 .tellsOfBars = false}},
        HostRow{"mate", "mate-panel", {.number = NumberStyle::wide}},
        HostRow{"mateApplet", "notification-ar", {.number = NumberStyle::wide}},
        HostRow{"waybar", "waybar", {.number = NumberStyle::wide}},
        HostRow{"xfce", "panel-2-systray", {}},
        HostRow{"lxqt", "lxqt-panel", {.keys = KeyNames::qt}},
        HostRow{"plasma", "plasmashell", {.keys = KeyNames::qt, .countsPixels = true}},
        HostRow{"plasma5", "kded5", {.keys = KeyNames::qt, .countsPixels = true}},
        HostRow{"plasma6", "kded6", {.keys = KeyNames::qt, .countsPixels = true}},
        HostRow{"unknown", "", {}}),
    rowName);
