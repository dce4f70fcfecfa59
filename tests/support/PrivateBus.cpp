#include "tests/support/PrivateBus.h"

#include <QFile>

#include <csignal>
#include <stdexcept>
#include <sys/prctl.h>

namespace
{

void write(const QString &path, const QString &text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
        throw std::runtime_error("cannot write " + path.toStdString());
}

/// dbus-daemon(1): everyone may say everything; a service that does not come up is given up soon.
const QString configuration = QStringLiteral(R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <listen>unix:dir=%1</listen>
  <servicedir>%1</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
  <limit name="service_start_timeout">500</limit>
</busconfig>
)");

} // namespace

PrivateBus::PrivateBus(const QMap<QString, QString> &services)
{
    write(m_directory.filePath(QStringLiteral("bus.conf")), configuration.arg(m_directory.path()));
    for (auto service = services.begin(); service != services.end(); ++service)
        write(m_directory.filePath(service.key() + QStringLiteral(".service")),
              QStringLiteral("[D-BUS Service]\nName=%1\nExec=%2\n")
                  .arg(service.key(), service.value()));
    m_daemon.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_daemon.setStandardErrorFile(QProcess::nullDevice());
    m_daemon.start(
        QStringLiteral("dbus-daemon"),
        {QStringLiteral("--config-file=") + m_directory.filePath(QStringLiteral("bus.conf")),
         QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
         QStringLiteral("--print-address")});
    while (!m_daemon.canReadLine())
        if (!m_daemon.waitForReadyRead(10000))
            throw std::runtime_error("dbus-daemon does not start");
    m_address = QString::fromUtf8(m_daemon.readLine()).trimmed();
}

PrivateBus::~PrivateBus()
{
    for (const QString &name : m_names)
        QDBusConnection::disconnectFromBus(name);
    kill();
}

QDBusConnection PrivateBus::connect()
{
    static int count = 0;
    const QString name = QStringLiteral("test-%1").arg(++count);
    m_names.append(name);
    return QDBusConnection::connectToBus(m_address, name);
}

void PrivateBus::disconnect(const QDBusConnection &connection)
{
    QDBusConnection::disconnectFromBus(connection.name());
}

void PrivateBus::kill()
{
    m_daemon.kill();
    m_daemon.waitForFinished();
}
