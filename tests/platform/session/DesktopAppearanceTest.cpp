#include "platform/session/DesktopAppearance.h"
#include "platform/window/BackdropBlur.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QDBusMessage>

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

struct SchemeRow
{
    const char *name;
    const char *group;
    const char *key;
    QVariant value;
    std::optional<ColorScheme> scheme;
};

class SchemeSetting : public testing::TestWithParam<SchemeRow>
{
};

TEST_P(SchemeSetting, isReadOrLeftAlone)
{
    EXPECT_EQ(colorScheme(QString::fromUtf8(GetParam().group), QString::fromUtf8(GetParam().key),
                          GetParam().value),
              GetParam().scheme);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SchemeSetting,
    testing::Values(
        SchemeRow{"any", "org.freedesktop.appearance", "color-scheme", 0U, ColorScheme::any},
        SchemeRow{"dark", "org.freedesktop.appearance", "color-scheme", 1U, ColorScheme::dark},
        SchemeRow{"light", "org.freedesktop.appearance", "color-scheme", 2U, ColorScheme::light},
        SchemeRow{"unknown", "org.freedesktop.appearance", "color-scheme", 3U, ColorScheme::any},
        SchemeRow{"nonsense", "org.freedesktop.appearance", "color-scheme",
                  QStringLiteral("prefer-dark"), std::nullopt},
        SchemeRow{"otherKey", "org.freedesktop.appearance", "contrast", 1U, std::nullopt},
        SchemeRow{"otherGroup", "org.gnome.desktop.interface", "color-scheme", 1U, std::nullopt}),
    rowName);

namespace
{

/// org.freedesktop.portal.Settings, as far as it is asked.
class FakePortal : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    uint scheme = 1;
    bool hasGnomeAnimations = true;
    QString plasmaFactor = QStringLiteral("1");

public Q_SLOTS:
    // NOLINTNEXTLINE(readability-identifier-naming): the name is the interface's.
    QDBusVariant Read(const QString &group, const QString &key)
    {
        const QHash<QString, QVariant> settings{
            {QStringLiteral("org.freedesktop.appearance color-scheme"), scheme},
            {QStringLiteral("org.gnome.desktop.interface enable-animations"), hasGnomeAnimations},
            {QStringLiteral("org.kde.kdeglobals.KDE AnimationDurationFactor"), plasmaFactor}};
        const QVariant value = settings.value(group + QLatin1Char(' ') + key);
        return QDBusVariant(QVariant::fromValue(QDBusVariant(value))); // as the real one wraps it
    }
};

class DesktopAppearanceTest : public testing::Test
{
protected:
    void SetUp() override
    {
        connection.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), &portal,
                                  QDBusConnection::ExportAllSlots);
        ASSERT_TRUE(connection.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
    }

    PrivateBus bus;
    FakePortal portal;
    QDBusConnection connection = bus.connect();
};

} // namespace

TEST_F(DesktopAppearanceTest, readsThatMotionIsToBeReduced)
{
    for (const bool isGnome : {true, false}) {
        portal.hasGnomeAnimations = !isGnome;
        portal.plasmaFactor = isGnome ? QString() : QStringLiteral("0");
        DesktopAppearance appearance(bus.connect());
        Surroundings last;
        appearance.observe([&last](const Surroundings &surroundings) { last = surroundings; });
        // The colour scheme is read last.
        EXPECT_TRUE(waitUntil([&last] { return last.colorScheme == ColorScheme::dark; }));
        EXPECT_TRUE(last.reducesMotion) << isGnome;
    }
}

TEST_F(DesktopAppearanceTest, tellsANewObserverAtOnce)
{
    DesktopAppearance appearance(bus.connect());
    QList<ColorScheme> told;
    appearance.observe(
        [&told](const Surroundings &surroundings) { told.append(surroundings.colorScheme); });
    EXPECT_EQ(told, QList<ColorScheme>{ColorScheme::any});
    EXPECT_TRUE(waitUntil([&told] { return told.last() == ColorScheme::dark; }));
}

TEST_F(DesktopAppearanceTest, tellsOnlyWhatHasChanged)
{
    DesktopAppearance appearance(bus.connect());
    int told = 0;
    Surroundings last;
    appearance.observe([&](const Surroundings &surroundings) {
        ++told;
        last = surroundings;
    });
    // The colour scheme is read last.
    EXPECT_TRUE(waitUntil([&last] { return last.colorScheme == ColorScheme::dark; }));
    EXPECT_EQ(told, 2);
}

TEST_F(DesktopAppearanceTest, followsThePortal)
{
    DesktopAppearance appearance(bus.connect());
    Surroundings last;
    appearance.observe([&last](const Surroundings &surroundings) { last = surroundings; });
    EXPECT_EQ(last.colorScheme, ColorScheme::any);
    EXPECT_TRUE(waitUntil([&last] { return last.colorScheme == ColorScheme::dark; }));
    const auto change = [this](const char *group, const char *key, const QVariant &value) {
        auto signal = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/portal/desktop"),
                                                 QStringLiteral("org.freedesktop.portal.Settings"),
                                                 QStringLiteral("SettingChanged"));
        signal << QString::fromUtf8(group) << QString::fromUtf8(key)
               << QVariant::fromValue(QDBusVariant(value));
        return connection.send(signal);
    };
    ASSERT_TRUE(change("org.freedesktop.appearance", "color-scheme", 2U));
    EXPECT_TRUE(waitUntil([&last] { return last.colorScheme == ColorScheme::light; }));
    EXPECT_FALSE(last.reducesMotion);
    ASSERT_TRUE(change("org.gnome.desktop.interface", "enable-animations", false));
    EXPECT_TRUE(waitUntil([&last] { return last.reducesMotion; }));
    EXPECT_EQ(last.colorScheme, ColorScheme::light);
}

TEST(BlurRegion, isOneRectangleInDevicePixels)
{
    EXPECT_EQ(blurRegion(QRectF(0, 0, 480, 540), 1), (std::vector<quint32>{0, 0, 480, 540}));
    EXPECT_EQ(blurRegion(QRectF(0, 0, 480, 540), 1.5), (std::vector<quint32>{0, 0, 720, 810}));
    EXPECT_EQ(blurRegion(QRectF(1, 2, 480, 540), 2), (std::vector<quint32>{2, 4, 960, 1080}));
    const std::vector<quint32> round{0, 2, 9, 6, 1, 0, 7, 1, 1, 9, 7, 1, 0, 1, 9, 1, 0, 8, 9, 1};
    EXPECT_EQ(blurRegion(QRectF(0, 0, 9, 10), 1, 2), round);
}

#include "DesktopAppearanceTest.moc"
