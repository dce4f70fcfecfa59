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
