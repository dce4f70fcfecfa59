#include "app/ApplicationPalette.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <QGuiApplication>

using namespace tidewick;

namespace
{

const QPalette darkDesktop(QColor(0x31, 0x36, 0x3B), QColor(0x23, 0x26, 0x29));
const QPalette lightDesktop(QColor(0xFC, 0xFC, 0xFC), QColor(0xEF, 0xF0, 0xF1));

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Window).lightness() < 80 &&
           palette.color(QPalette::Base).lightness() < 80 &&
           palette.color(QPalette::Button).lightness() < 80 &&
           palette.color(QPalette::WindowText).lightness() > 200 &&
           palette.color(QPalette::Text).lightness() > 200 &&
           palette.color(QPalette::ButtonText).lightness() > 200;
}

} // namespace

struct PaletteRow
{
    const char *name;
    ColorScheme scheme;
    const QPalette *desktops;
    bool isDesktops;
    bool isDark;
};

class ApplicationPalette : public testing::TestWithParam<PaletteRow>
{
};

TEST_P(ApplicationPalette, isTheDesktopsIfItSuitsTheScheme)
{
    const QPalette palette = paletteFor(GetParam().scheme, *GetParam().desktops);
    EXPECT_EQ(palette == *GetParam().desktops, GetParam().isDesktops);
    EXPECT_EQ(isDark(palette), GetParam().isDark);
    EXPECT_EQ(palette.color(QPalette::Highlight), GetParam().desktops->color(QPalette::Highlight));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ApplicationPalette,
    testing::Values(PaletteRow{"anyOnLight", ColorScheme::any, &lightDesktop, true, false},
                    PaletteRow{"anyOnDark", ColorScheme::any, &darkDesktop, true, true},
                    PaletteRow{"darkOnLight", ColorScheme::dark, &lightDesktop, false, true},
                    PaletteRow{"darkOnDark", ColorScheme::dark, &darkDesktop, true, true},
                    PaletteRow{"lightOnLight", ColorScheme::light, &lightDesktop, true, false},
                    PaletteRow{"lightOnDark", ColorScheme::light, &darkDesktop, false, false}),
    rowName);

TEST(ApplicationPalette, isTheDesktopsIfItsTextAndWindowAreEquallyLight)
{
    QPalette grey(Qt::gray, Qt::gray);
    grey.setColor(QPalette::WindowText, Qt::gray);
    EXPECT_EQ(paletteFor(ColorScheme::light, grey), grey);
    EXPECT_NE(paletteFor(ColorScheme::dark, grey), grey);
}

struct RoleRow
{
    const char *name;
    QPalette::ColorRole role;
    QRgb dark;
    QRgb light;
    QRgb disabledDark;
    QRgb disabledLight;
};

class PaletteRole : public testing::TestWithParam<RoleRow>
{
};

TEST_P(PaletteRole, hasTheColourOfTheScheme)
{
    const RoleRow &row = GetParam();
    const QPalette dark = paletteFor(ColorScheme::dark, lightDesktop);
    const QPalette light = paletteFor(ColorScheme::light, darkDesktop);
    EXPECT_EQ(dark.color(QPalette::Active, row.role), QColor(row.dark));
    EXPECT_EQ(light.color(QPalette::Active, row.role), QColor(row.light));
    EXPECT_EQ(dark.color(QPalette::Disabled, row.role), QColor(row.disabledDark));
    EXPECT_EQ(light.color(QPalette::Disabled, row.role), QColor(row.disabledLight));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, PaletteRole,
    testing::Values(
        RoleRow{"window", QPalette::Window, 0x2B2B2B, 0xF2F2F2, 0x2B2B2B, 0xF2F2F2},
        RoleRow{"base", QPalette::Base, 0x1E1E1E, 0xFFFFFF, 0x1E1E1E, 0xFFFFFF},
        RoleRow{"alternateBase", QPalette::AlternateBase, 0x2B2B2B, 0xF2F2F2, 0x2B2B2B, 0xF2F2F2},
        RoleRow{"button", QPalette::Button, 0x3A3A3A, 0xE8E8E8, 0x3A3A3A, 0xE8E8E8},
        RoleRow{"toolTip", QPalette::ToolTipBase, 0x3A3A3A, 0xE8E8E8, 0x3A3A3A, 0xE8E8E8},
        RoleRow{"windowText", QPalette::WindowText, 0xF2F2F2, 0x1E1E1E, 0x8C8C8C, 0x8C8C8C},
        RoleRow{"text", QPalette::Text, 0xF2F2F2, 0x1E1E1E, 0x8C8C8C, 0x8C8C8C},
        RoleRow{"buttonText", QPalette::ButtonText, 0xF2F2F2, 0x1E1E1E, 0x8C8C8C, 0x8C8C8C},
        RoleRow{"toolTipText", QPalette::ToolTipText, 0xF2F2F2, 0x1E1E1E, 0x8C8C8C, 0x8C8C8C},
        RoleRow{"brightText", QPalette::BrightText, 0xF2F2F2, 0x1E1E1E, 0x8C8C8C, 0x8C8C8C},
        RoleRow{"placeholder", QPalette::PlaceholderText, 0x8C8C8C, 0x8C8C8C, 0x8C8C8C, 0x8C8C8C},
        RoleRow{"link", QPalette::Link, 0x6CB4F5, 0x0A5FB4, 0x6CB4F5, 0x0A5FB4},
        RoleRow{"visited", QPalette::LinkVisited, 0x6CB4F5, 0x0A5FB4, 0x6CB4F5, 0x0A5FB4}),
    rowName);

TEST(ApplicationPalette, changesWithTheSchemeAndBack)
{
    const QPalette before = QGuiApplication::palette();
    ASSERT_FALSE(isDark(before));
    followColorScheme(ColorScheme::dark);
    EXPECT_TRUE(isDark(QGuiApplication::palette()));
    followColorScheme(ColorScheme::dark);
    EXPECT_TRUE(isDark(QGuiApplication::palette()));
    followColorScheme(ColorScheme::light);
    EXPECT_EQ(QGuiApplication::palette(), before);
}

// As the platform theme of Plasma does it.
TEST(ApplicationPalette, outlivesAChangeOfTheDesktopsPalette)
{
    followColorScheme(ColorScheme::dark);
    QGuiApplication::setPalette(lightDesktop);
    EXPECT_TRUE(isDark(QGuiApplication::palette()));
    followColorScheme(ColorScheme::any);
    QGuiApplication::setPalette(lightDesktop);
    EXPECT_EQ(QGuiApplication::palette().color(QPalette::Window),
              lightDesktop.color(QPalette::Window));
    QGuiApplication::setPalette({});
}
