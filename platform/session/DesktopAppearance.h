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

/// Whether a setting of the desktop portal asks for less motion; nothing if it is another setting.
/// GNOME has "enable-animations", Plasma a factor that is 0 if animations are off.
std::optional<bool> motionReduced(const QString &group, const QString &key, const QVariant &value);

/// The colour scheme that a setting of the desktop portal asks for; nothing if it is another
/// setting.
std::optional<ColorScheme> colorScheme(const QString &group, const QString &key,
                                       const QVariant &value);

/// The surroundings as the X server and the desktop portal (org.freedesktop.portal.Settings) report
/// them. Without a portal motion is not reduced, and any colour
/// scheme will do. The X server is asked again whenever the focus
/// moves to another window; the portal reports changes by itself.
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
