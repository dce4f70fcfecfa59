#pragma once

#include "platform/Appearance.h"

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QVariant>

#include <optional>

namespace tidewick
{

/// What a setting of the desktop portal says of motion: nothing, or whether it is to be reduced.
/// GNOME and those who follow it have "enable-animations", Plasma a factor that is 0 without them.
std::optional<bool> motionReduced(const QString &group, const QString &key, const QVariant &value);

/// The surroundings as the X server and the desktop portal (org.freedesktop.portal.Settings) tell
/// them. A desktop without a portal wants all motion. The X server is asked again whenever the
/// focus moves from window to window, the portal tells by itself.
class DesktopAppearance : public QObject, public Appearance
{
    Q_OBJECT

public:
    explicit DesktopAppearance(QDBusConnection bus = QDBusConnection::sessionBus());

    void observe(std::function<void(const Surroundings &)> observer) override;

private Q_SLOTS:
    void changeSetting(const QString &group, const QString &key, const QDBusVariant &value);

private:
    QCoro::Task<> read(QString group, QString key);
    void lookAtScreen();
    void tell(const Surroundings &surroundings);

    QDBusConnection m_bus;
    Surroundings m_surroundings;
    std::function<void(const Surroundings &)> m_observer;
};

} // namespace tidewick
