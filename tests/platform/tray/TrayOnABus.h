#pragma once

#include "tests/support/PrivateBus.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QObject>

#include <sys/prctl.h>

/// What keeps the list of status notifier items.
class Watcher : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost)

public:
    QString item; // that registered last
    bool claimsHost = true;
    bool answers = true;
    QDBusMessage unanswered; // the last registration that got no answer

    bool hasHost() const { return claimsHost; }

public Q_SLOTS:
    // NOLINTBEGIN(readability-identifier-naming): the names are the protocol's.
    void RegisterStatusNotifierItem(const QString &service)
    {
        item = service;
        if (answers)
            return;
        setDelayedReply(true);
        unanswered = message();
    }

Q_SIGNALS:
    void StatusNotifierHostRegistered();
    // NOLINTEND(readability-identifier-naming)
};

/// A bar's connection to the bus, which ends with it.
struct Bar
{
    explicit Bar(PrivateBus &bus) : connection(bus.connect()) {}
    ~Bar() { PrivateBus::disconnect(connection); }
    Q_DISABLE_COPY_MOVE(Bar)

    QDBusConnection connection;
};

/// A session whose watcher's process has the name that a test gives.
class TrayOnABus : public testing::Test
{
protected:
    TrayOnABus() { prctl(PR_GET_NAME, m_ownName.data()); }
    ~TrayOnABus() override { prctl(PR_SET_NAME, m_ownName.data()); }
    Q_DISABLE_COPY_MOVE(TrayOnABus)

    void startWatcher(const char *host)
    {
        prctl(PR_SET_NAME, host); // the watcher is in this process
        tray.registerObject(QStringLiteral("/StatusNotifierWatcher"), &watcher,
                            QDBusConnection::ExportAllContents);
        tray.registerService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    }

    /// Makes `next` the watcher in place of the first one.
    void replaceWatcher(QDBusConnection connection, Watcher &next)
    {
        connection.registerObject(QStringLiteral("/StatusNotifierWatcher"), &next,
                                  QDBusConnection::ExportAllContents);
        connection.interface()->registerService(QStringLiteral("org.kde.StatusNotifierWatcher"),
                                                QDBusConnectionInterface::QueueService);
        tray.unregisterService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    }
    /// What the bus or Qt says to the item when it waits no longer for the watcher's answer.
    void endWait()
    {
        tray.send(watcher.unanswered.createErrorReply(QDBusError::NoReply, QString()));
    }

    /// The item's answer to `client`.
    QDBusMessage ask(const QDBusConnection &client, const QString &path, const QString &interface,
                     const QString &method, const QVariantList &arguments)
    {
        auto call = QDBusMessage::createMethodCall(watcher.item, path, interface, method);
        call.setArguments(arguments);
        const auto answer = client.asyncCall(call);
        waitUntil([&] { return answer.isFinished(); });
        return answer.reply();
    }
    QDBusMessage askMenu(const QDBusConnection &client, const char *method,
                         const QVariantList &arguments)
    {
        return ask(client, QStringLiteral("/StatusNotifierItem/Menu"),
                   QStringLiteral("com.canonical.dbusmenu"), QLatin1String(method), arguments);
    }
    /// What a bar does that shows the item.
    void readMenu(const Bar &bar) { askMenu(bar.connection, "GetLayout", {0, -1, QStringList()}); }

    PrivateBus bus;
    QDBusConnection tray = bus.connect();
    Watcher watcher;

private:
    QByteArray m_ownName = QByteArray(16, 0);
};
