#include "platform/session/SingleInstance.h"

#include "platform/session/ApplicationAdaptor.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>

#include <utility>

namespace tidewick
{
namespace
{

const QString applicationId = QStringLiteral("org.tidewick.Tidewick");
const QString applicationPath = QStringLiteral("/org/tidewick/Tidewick");
constexpr int answerTimeoutMs = 2000;

} // namespace

QVariantMap takePlatformData()
{
    QVariantMap data;
    const auto add = [&data](const char *variable, const QString &key) {
        const QString value = qEnvironmentVariable(variable);
        if (!value.isEmpty())
            data.insert(key, value);
    };
    add("DESKTOP_STARTUP_ID", QStringLiteral("desktop-startup-id"));
    add("XDG_ACTIVATION_TOKEN", QStringLiteral("activation-token"));
    qunsetenv("XDG_ACTIVATION_TOKEN");
    return data;
}

SingleInstance::SingleInstance(QDBusConnection bus) : m_bus(std::move(bus))
{
    auto *application = new ApplicationAdaptor(this);
    connect(application, &ApplicationAdaptor::activated, this, &SingleInstance::activated);
}

InstanceClaim SingleInstance::claim()
{
    if (!m_bus.isConnected())
        return InstanceClaim::noBus;
    m_bus.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                  QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"),
                  this, SIGNAL(sessionEnded()));
    // Comes before the name, because others may call as soon as they see the name.
    m_bus.registerObject(applicationPath, this, QDBusConnection::ExportAdaptors);
    if (m_bus.registerService(applicationId))
        return InstanceClaim::first;
    return m_bus.interface()->isServiceRegistered(applicationId) ? InstanceClaim::another
                                                                 : InstanceClaim::refused;
}

void SingleInstance::activateOther(const QVariantMap &platformData) const
{
    auto call = QDBusMessage::createMethodCall(applicationId, applicationPath,
                                               QStringLiteral("org.freedesktop.Application"),
                                               QStringLiteral("Activate"));
    call.setAutoStartService(false);
    call << platformData;
    m_bus.call(call, QDBus::Block, answerTimeoutMs);
}

} // namespace tidewick
