#include "platform/StatusNotifierItem.h"

#include "platform/DBusMenu.h"
#include "platform/StatusItemImage.h"
#include "platform/StatusNotifierItemAdaptor.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QFile>

#include <array>
#include <cstdio>

namespace tidewick
{
namespace
{

const QString connectionName = QStringLiteral("tidewick-status-item");
const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString menuPath = QStringLiteral("/StatusNotifierItem/Menu");
const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

/// The sizes that hosts ask for, at 1x and 2x.
constexpr std::array<int, 5> sides{22, 24, 32, 48, 64};

QString processName(uint pid)
{
    QFile comm(QStringLiteral("/proc/%1/comm").arg(pid));
    if (!comm.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(comm.readAll()).trimmed();
}

} // namespace

NumberStyle numberStyle(const QString &processName)
{
    if (processName == QLatin1String("gnome-shell") ||
        processName.startsWith(QLatin1String("ayatana-")))
        return NumberStyle::label;
    // MATE would show a label too, but drops the icon of an item that has one.
    if (processName == QLatin1String("mate-panel") || processName == QLatin1String("waybar"))
        return NumberStyle::wide;
    return NumberStyle::square;
}

StatusNotifierItem::StatusNotifierItem()
    : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName)),
      m_item(new StatusNotifierItemAdaptor(this, QDBusObjectPath(menuPath))),
      m_menuObject(std::make_unique<QObject>()),
      m_menu(new DBusMenu(m_menuObject.get()))
{
    m_item->setClicked([this](QPoint position) { send({ClickType::leftMouseUp, position}); });
    m_menu->setWanted([this] { send({ClickType::rightMouseUp, {}}); });
    m_bus.registerObject(itemPath, this, QDBusConnection::ExportAdaptors);
    m_bus.registerObject(menuPath, m_menuObject.get(), QDBusConnection::ExportAdaptors);
    auto *watcher = new QDBusServiceWatcher(watcherName, m_bus,
                                            QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this,
            &StatusNotifierItem::registerWithWatcher);
    m_bus.connect(watcherName, watcherPath, watcherName,
                  QStringLiteral("StatusNotifierHostRegistered"), this,
                  SLOT(registerWithWatcher()));
    registerWithWatcher();
}

StatusNotifierItem::~StatusNotifierItem()
{
    QDBusConnection::disconnectFromBus(connectionName);
}

void StatusNotifierItem::registerWithWatcher()
{
    auto call = QDBusMessage::createMethodCall(watcherName, watcherPath, watcherName,
                                               QStringLiteral("RegisterStatusNotifierItem"));
    call.setAutoStartService(false);
    call << m_bus.baseService();
    auto *reply = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(reply, &QDBusPendingCallWatcher::finished, this, [this, reply] {
        reply->deleteLater();
        if (!reply->isError()) {
            learnHost();
        } else if (!m_reportedMissingTray) {
            m_reportedMissingTray = true;
            std::fputs("tidewick: this desktop shows no status items; waiting for a tray\n",
                       stderr);
        }
    });
}

void StatusNotifierItem::learnHost()
{
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetConnectionUnixProcessID"));
    call << watcherName;
    auto *reply = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(reply, &QDBusPendingCallWatcher::finished, this, [this, reply] {
        reply->deleteLater();
        const QDBusPendingReply<uint> pid = *reply;
        if (pid.isError())
            return;
        m_style = numberStyle(processName(pid.value()));
        redraw();
    });
}

void StatusNotifierItem::setImage(const QImage &image, QSize points)
{
    if (image == m_image && points == m_points)
        return;
    m_image = image;
    m_points = points;
    redraw();
}

void StatusNotifierItem::setAttributedTitle(const StatusTitle &title)
{
    if (title == m_title)
        return;
    m_title = title;
    redraw();
}

void StatusNotifierItem::setImagePosition(ImagePosition /*position*/)
{
    // Every host puts the image first.
}

void StatusNotifierItem::setToolTip(const QString &title, const QString &text)
{
    m_item->setToolTip(title, text);
}

void StatusNotifierItem::setAction(const std::function<void()> &action)
{
    m_action = action;
}

void StatusNotifierItem::send(const ClickEvent &event)
{
    if (!m_action)
        return;
    m_event = event;
    m_action();
    m_event.reset();
}

void StatusNotifierItem::setMenu(const QList<MenuItem> &items)
{
    m_attachedMenu = items;
}

void StatusNotifierItem::performClick()
{
    m_menu->setItems(m_attachedMenu);
}

void StatusNotifierItem::redraw()
{
    if (m_image.isNull())
        return;
    const auto draw = [this](int side) {
        if (m_title.text.isEmpty() || m_style == NumberStyle::label)
            return plainStatusImage(m_image, m_points, side);
        if (m_style == NumberStyle::wide)
            return wideStatusImage(m_image, m_points, m_title, side);
        return badgedStatusImage(m_image, m_points, m_title, side);
    };
    QList<DBusPixmap> icon;
    for (const int side : sides)
        icon.append(DBusPixmap::fromImage(draw(side)));
    m_item->setIcon(icon);
    m_item->setLabel(m_style == NumberStyle::label ? m_title.text : QString());
}

} // namespace tidewick
