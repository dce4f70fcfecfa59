#include "platform/session/ShellLayout.h"
#include "tests/support/PrivateBus.h"

#include <gtest/gtest.h>

#include <QObject>
#include <QThread>
#include <QVariantMap>

using namespace tidewick;

namespace
{

/// What GNOME Shell tells of its monitors.
class DisplayConfig : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.gnome.Mutter.DisplayConfig")

public:
    explicit DisplayConfig(const QVariantMap &properties) : m_properties(properties) {}

public Q_SLOTS:
    // NOLINTNEXTLINE(readability-identifier-naming): the name is the protocol's.
    uint GetCurrentState(QStringList & /*monitors*/, QStringList & /*logicalMonitors*/,
                         QVariantMap &properties) const
    {
        properties = m_properties;
        return 1;
    }

private:
    const QVariantMap m_properties;
};

class ShellLayout : public testing::Test
{
protected:
    ~ShellLayout() override
    {
        m_thread.quit();
        m_thread.wait();
    }

    /// Whether a shell with these properties counts points.
    bool countsPoints(const QVariantMap &properties)
    {
        auto *const config = new DisplayConfig(properties);
        config->moveToThread(&m_thread); // the question blocks this one
        QObject::connect(&m_thread, &QThread::finished, config, &QObject::deleteLater);
        m_thread.start();
        m_shell.registerObject(QStringLiteral("/org/gnome/Mutter/DisplayConfig"), config,
                               QDBusConnection::ExportAllSlots);
        m_shell.registerService(QStringLiteral("org.gnome.Mutter.DisplayConfig"));
        return shellCountsPoints(bus.connect());
    }

    PrivateBus bus;

private:
    QDBusConnection m_shell = bus.connect();
    QThread m_thread;
};

} // namespace

TEST_F(ShellLayout, isInPointsIfItIsLogical)
{
    EXPECT_TRUE(countsPoints({{QStringLiteral("layout-mode"), 1U}}));
}

TEST_F(ShellLayout, isInPixelsIfItIsPhysical)
{
    EXPECT_FALSE(countsPoints({{QStringLiteral("layout-mode"), 2U}}));
}

TEST_F(ShellLayout, isInPixelsIfTheShellDoesNotSay)
{
    EXPECT_FALSE(countsPoints({}));
}

TEST_F(ShellLayout, isInPixelsWithoutAShell)
{
    EXPECT_FALSE(shellCountsPoints(bus.connect()));
}

#include "ShellLayoutTest.moc"
