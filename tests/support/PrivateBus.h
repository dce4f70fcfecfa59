#pragma once

#include <QDBusConnection>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>

/// A message bus of the test's own, with no service but those it is told to start on demand.
class PrivateBus
{
public:
    /// `services`: the command line that the bus starts for each name.
    explicit PrivateBus(const QMap<QString, QString> &services = {});
    /// Ends the bus and with it every connection.
    ~PrivateBus();
    Q_DISABLE_COPY_MOVE(PrivateBus)

    const QString &address() const { return m_address; }
    /// A new connection, open until `disconnect` or the end of the bus.
    QDBusConnection connect();
    static void disconnect(const QDBusConnection &connection);
    void kill();

private:
    QTemporaryDir m_directory;
    QProcess m_daemon;
    QString m_address;
    QStringList m_names;
};
