#include "platform/SingleInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>

namespace tidewick
{

InstanceClaim claimSingleInstance()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return InstanceClaim::noBus;
    const QString name = QStringLiteral("org.tidewick.Tidewick");
    if (bus.registerService(name))
        return InstanceClaim::first;
    return bus.interface()->isServiceRegistered(name) ? InstanceClaim::another
                                                      : InstanceClaim::refused;
}

} // namespace tidewick
