#pragma once

#include <QObject>
#include <QVariantMap>

namespace tidewick
{

/// What the session bus answered when this process asked to be the one instance.
enum class InstanceClaim { first, another, refused, noBus };

/// What the desktop gave this process at its start to prove that the user asked for it, as
/// org.freedesktop.Application passes it on. Takes the token out of the environment, where programs
/// started from here would find it; the toolkit does so with the startup id.
QVariantMap takePlatformData();

/// The one instance of the program in a session: the owner of the application id on the session
/// bus, with org.freedesktop.Application at /org/tidewick/Tidewick (freedesktop.org's Desktop Entry
/// Specification, "D-Bus Activation"). The name is held until the process ends.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    SingleInstance();

    InstanceClaim claim();

    /// Asks the instance that there is to show itself. Returns when it has answered, or has not for
    /// two seconds.
    static void activateOther(const QVariantMap &platformData);

Q_SIGNALS:
    /// The user started the program once more, or chose it where the bus starts programs.
    void activated(const QVariantMap &platformData);
    /// The session is over: its bus is gone.
    void sessionEnded();
};

} // namespace tidewick
