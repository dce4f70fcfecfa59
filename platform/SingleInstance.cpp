#include "platform/SingleInstance.h"

#include <QDBusConnection>

namespace tidewick
{

InstanceClaim claimSingleInstance()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return InstanceClaim::noBus;
    return bus.registerService(QStringLiteral("org.tidewick.Tidewick")) ? InstanceClaim::first
                                                                        : InstanceClaim::another;
}

} // namespace tidewick
