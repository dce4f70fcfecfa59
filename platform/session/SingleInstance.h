#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

namespace tidewick
{

/// What the session bus answered when this process asked to be the one instance.
enum class InstanceClaim { first, another, refused, noBus };

/// The proof that the user asked for this start, in the form in which org.freedesktop.Application
/// passes it on. Takes the token out of the environment, because programs started from here would
/// inherit it. The toolkit does the same with the startup id.
QVariantMap takePlatformData();

/// The one instance of the program in a session: the owner of the application id on the session
/// bus, with org.freedesktop.Application at /org/tidewick/Tidewick (freedesktop.org's Desktop Entry
/// Specification, "D-Bus Activation"). The name is held until the process ends.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    explicit SingleInstance(QDBusConnection bus = QDBusConnection::sessionBus());

    InstanceClaim claim();

    /// Asks the first instance to show its panel. Waits for its answer, at most two seconds.
    void activateOther(const QVariantMap &platformData) const;

Q_SIGNALS:
    /// The user started the program again, or the bus did on the user's behalf.
    void activated(const QVariantMap &platformData);
    /// The session has ended, because its bus is gone.
    void sessionEnded();

private:
    QDBusConnection m_bus;
};

} // namespace tidewick
