#include "platform/session/DesktopAppearance.h"

#include "platform/window/BackdropBlur.h"

#include <QCoroDBusPendingReply>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QGuiApplication>
#include <QPointer>
#include <QWindow>

#include <utility>

namespace tidewick
{
namespace
{

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString portalSettings = QStringLiteral("org.freedesktop.portal.Settings");

const QString gnomeGroup = QStringLiteral("org.gnome.desktop.interface");
const QString gnomeKey = QStringLiteral("enable-animations");
const QString plasmaGroup = QStringLiteral("org.kde.kdeglobals.KDE");
const QString plasmaKey = QStringLiteral("AnimationDurationFactor");

const QString schemeGroup = QStringLiteral("org.freedesktop.appearance");
const QString schemeKey = QStringLiteral("color-scheme");

/// The value inside the variants that the portal wraps around it.
QVariant unwrapped(QVariant value)
{
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

std::optional<bool> motionReduced(const QString &group, const QString &key, const QVariant &value)
{
    if (group == gnomeGroup && key == gnomeKey && value.metaType().id() == QMetaType::Bool)
        return !value.toBool();
    bool isNumber = false;
    const double factor = value.toDouble(&isNumber);
    if (group == plasmaGroup && key == plasmaKey && isNumber)
        return factor <= 0;
    return std::nullopt;
}

std::optional<ColorScheme> colorScheme(const QString &group, const QString &key,
                                       const QVariant &value)
{
    if (group != schemeGroup || key != schemeKey || value.metaType().id() != QMetaType::UInt)
        return std::nullopt;
    switch (value.toUInt()) {
    case 1:
        return ColorScheme::dark;
    case 2:
        return ColorScheme::light;
    default:
        return ColorScheme::any;
    }
}

DesktopAppearance::DesktopAppearance(QDBusConnection bus) : m_bus(std::move(bus))
{
    // Qt finds a slot's types by their names, and knows this one only from its first use.
    qRegisterMetaType<QDBusVariant>();
    m_bus.connect(portalService, portalPath, portalSettings, QStringLiteral("SettingChanged"), this,
                  SLOT(changeSetting(QString, QString, QDBusVariant)));
    read(gnomeGroup, gnomeKey);
    read(plasmaGroup, plasmaKey);
    read(schemeGroup, schemeKey);
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &DesktopAppearance::lookAtScreen);
    lookAtScreen();
}

void DesktopAppearance::observe(std::function<void(const Surroundings &)> observer)
{
    m_observer = std::move(observer);
    m_observer(m_surroundings);
}

QCoro::Task<> DesktopAppearance::read(QString group, QString key)
{
    const QPointer<DesktopAppearance> self(this);
    auto call = QDBusMessage::createMethodCall(portalService, portalPath, portalSettings,
                                               QStringLiteral("Read"));
    call << group << key;
    const QDBusPendingReply<QDBusVariant> value = m_bus.asyncCall(call);
    co_await value;
    if (self && value.isValid())
        changeSetting(group, key, value.value());
}

void DesktopAppearance::changeSetting(const QString &group, const QString &key,
                                      const QDBusVariant &value)
{
    const QVariant setting = unwrapped(value.variant());
    Surroundings changed = m_surroundings;
    changed.reducesMotion = motionReduced(group, key, setting).value_or(changed.reducesMotion);
    changed.colorScheme = colorScheme(group, key, setting).value_or(changed.colorScheme);
    tell(changed);
}

void DesktopAppearance::lookAtScreen()
{
    Surroundings changed = m_surroundings;
    changed.isComposited = isScreenComposited();
    changed.isBlurred = changed.isComposited && isBlurOffered();
    tell(changed);
}

void DesktopAppearance::tell(const Surroundings &surroundings)
{
    if (surroundings == m_surroundings)
        return;
    m_surroundings = surroundings;
    if (m_observer)
        m_observer(m_surroundings);
}

} // namespace tidewick
