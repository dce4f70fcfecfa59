#include "platform/tray/StatusNotifierItem.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDBusVariant>

#include <memory>
#include <sys/prctl.h>

using namespace tidewick;

namespace
{

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");

/// What keeps the list of items, with a host.
class Watcher : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost)

public:
    QString item; // that registered last
    bool hasHost() const { return true; }

public Q_SLOTS:
    // NOLINTNEXTLINE(readability-identifier-naming): the name is the protocol's.
    void RegisterStatusNotifierItem(const QString &service) { item = service; }
};

/// A session with a watcher whose process has the name that a test gives.
class TrayOnABus : public testing::Test
{
protected:
    TrayOnABus() { prctl(PR_GET_NAME, m_ownName.data()); }
    ~TrayOnABus() override
    {
        item.reset();
        prctl(PR_SET_NAME, m_ownName.data());
    }
    Q_DISABLE_COPY_MOVE(TrayOnABus)

    /// The item in the tray of the process `host`.
    void show(const char *host)
    {
        prctl(PR_SET_NAME, host); // the watcher is in this process
        tray.registerObject(QStringLiteral("/StatusNotifierWatcher"), &watcher,
                            QDBusConnection::ExportAllContents);
        tray.registerService(watcherName);
        item = std::make_unique<StatusNotifierItem>(
            [this](const ClickEvent &event) { clicks.append(event); }, bus.address());
        ASSERT_TRUE(waitUntil([this] { return item->hasHost(); }));
    }

    QDBusMessage ask(const QString &path, const QString &interface, const QString &method,
                     const QVariantList &arguments)
    {
        auto call = QDBusMessage::createMethodCall(watcher.item, path, interface, method);
        call.setArguments(arguments);
        const auto answer = tray.asyncCall(call);
        waitUntil([&] { return answer.isFinished(); });
        return answer.reply();
    }
    QVariant property(const char *name)
    {
        const QDBusMessage answer =
            ask(QStringLiteral("/StatusNotifierItem"),
                QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                {QStringLiteral("org.kde.StatusNotifierItem"), QLatin1String(name)});
        return answer.arguments().value(0).value<QDBusVariant>().variant();
    }
    /// The title of the menu's entry `id`.
    QString title(int id)
    {
        const QDBusMessage answer = askMenu("GetProperty", {id, QStringLiteral("label")});
        return answer.arguments().value(0).value<QDBusVariant>().variant().toString();
    }
    QDBusMessage askMenu(const char *method, const QVariantList &arguments)
    {
        return ask(QStringLiteral("/StatusNotifierItem/Menu"),
                   QStringLiteral("com.canonical.dbusmenu"), QLatin1String(method), arguments);
    }

    PrivateBus bus;
    QDBusConnection tray = bus.connect();
    Watcher watcher;
    std::unique_ptr<StatusNotifierItem> item;
    QList<ClickEvent> clicks;

private:
    QByteArray m_ownName = QByteArray(16, 0);
};

} // namespace

TEST_F(TrayOnABus, iconHasANameOnlyWhereNoPixelsAreTaken)
{
    show("ayatana-indicat");
    EXPECT_EQ(property("IconName"), QStringLiteral("org.tidewick.Tidewick-status"));
    const QString theme = property("IconThemePath").toString();
    EXPECT_TRUE(theme.startsWith(QLatin1Char('/')) &&
                theme.endsWith(QLatin1String("/share/icons")) &&
                !theme.contains(QLatin1String("..")))
        << theme.toStdString();
}

TEST_F(TrayOnABus, nameDoesNotWinOverThePixels)
{
    show("panel-2-systray");
    EXPECT_EQ(property("IconName"), QString());
    EXPECT_EQ(property("IconThemePath"), QString());
}

TEST_F(TrayOnABus, menuOpensThePanelWhereNoClickDoes)
{
    show("ayatana-indicat");
    item->openMenu({{QStringLiteral("Quit Tidewick"), {}, {}}});
    EXPECT_EQ(title(1), QStringLiteral("Show Tidewick"));
    EXPECT_EQ(title(2), QStringLiteral("Quit Tidewick"));

    askMenu("Event",
            {1, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(QString())), 0U});
    EXPECT_TRUE(waitUntil([this] { return !clicks.isEmpty(); }));
    EXPECT_EQ(clicks.value(0).type, ClickType::leftMouseUp);
    EXPECT_TRUE(clicks.value(0).isInMenu);
}

TEST_F(TrayOnABus, menuHasNoOtherEntriesElsewhere)
{
    show("panel-2-systray");
    item->openMenu({{QStringLiteral("Quit Tidewick"), {}, {}}});
    EXPECT_EQ(title(1), QStringLiteral("Quit Tidewick"));
}

#include "TrayOnABusTest.moc"
