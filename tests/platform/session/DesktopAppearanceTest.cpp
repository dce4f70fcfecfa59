#include "platform/session/DesktopAppearance.h"
#include "platform/window/BackdropBlur.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

using namespace tidewick;

struct MotionRow
{
    const char *name;
    const char *group;
    const char *key;
    QVariant value;
    std::optional<bool> isReduced;
};

class MotionSetting : public testing::TestWithParam<MotionRow>
{
};

TEST_P(MotionSetting, isReadOrLeftAlone)
{
    EXPECT_EQ(motionReduced(QString::fromUtf8(GetParam().group), QString::fromUtf8(GetParam().key),
                            GetParam().value),
              GetParam().isReduced);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, MotionSetting,
    testing::Values(
        MotionRow{"gnomeOn", "org.gnome.desktop.interface", "enable-animations", true, false},
        MotionRow{"gnomeOff", "org.gnome.desktop.interface", "enable-animations", false, true},
        MotionRow{"gnomeNonsense", "org.gnome.desktop.interface", "enable-animations",
                  QStringLiteral("never"), std::nullopt},
        MotionRow{"plasmaOff", "org.kde.kdeglobals.KDE", "AnimationDurationFactor",
                  QStringLiteral("0"), true},
        MotionRow{"plasmaSlow", "org.kde.kdeglobals.KDE", "AnimationDurationFactor",
                  QStringLiteral("2.5"), false},
        MotionRow{"plasmaNonsense", "org.kde.kdeglobals.KDE", "AnimationDurationFactor",
                  QStringLiteral("x"), std::nullopt},
        MotionRow{"otherKey", "org.gnome.desktop.interface", "cursor-size", 24, std::nullopt}),
    rowName);

TEST(BlurRegion, isOneRectangleInDevicePixels)
{
    EXPECT_EQ(blurRegion(QRectF(0, 0, 480, 540), 1), (std::vector<quint32>{0, 0, 480, 540}));
    EXPECT_EQ(blurRegion(QRectF(0, 0, 480, 540), 1.5), (std::vector<quint32>{0, 0, 720, 810}));
    EXPECT_EQ(blurRegion(QRectF(1, 2, 480, 540), 2), (std::vector<quint32>{2, 4, 960, 1080}));
    const std::vector<quint32> round{0, 2, 9, 6, 1, 0, 7, 1, 1, 9, 7, 1, 0, 1, 9, 1, 0, 8, 9, 1};
    EXPECT_EQ(blurRegion(QRectF(0, 0, 9, 10), 1, 2), round);
}
