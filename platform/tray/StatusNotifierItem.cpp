#include "platform/tray/StatusNotifierItem.h"

#include "platform/tray/StatusItemImage.h"
#include "platform/tray/StatusNotifierItemAdaptor.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusReply>
#include <QDBusServiceWatcher>
#include <QFile>

#include <utility>

namespace tidewick
{
namespace
{

const QString connectionName = QStringLiteral("tidewick-status-item");
const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString menuPath = QStringLiteral("/StatusNotifierItem/Menu");
const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

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
    if (processName == QLatin1String("mate-panel") ||      // the applet in the panel's own process
        processName == QLatin1String("notification-ar") || // and in one of its own
        processName == QLatin1String("waybar"))
        return NumberStyle::wide;
    return NumberStyle::square;
}

KeyNames keyNames(const QString &processName)
{
    const bool isQt = processName == QLatin1String("lxqt-panel") ||
                      processName == QLatin1String("plasmashell") ||
                      processName.startsWith(QLatin1String("kded"));
    return isQt ? KeyNames::qt : KeyNames::keysym;
}

StatusNotifierItem::StatusNotifierItem()
    : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName)),
      m_menuObject(std::make_unique<DBusObject>()),
      m_menu(new DBusMenu(m_menuObject.get()))
{
    m_menu->setWanted([this] { send({ClickType::rightMouseUp, {}}); });
    exportItem();
    m_bus.registerObject(menuPath, m_menuObject.get(), QDBusConnection::ExportAdaptors);
    auto *watcher =
        new QDBusServiceWatcher(watcherName, m_bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this,
            &StatusNotifierItem::registerWithWatcher);
    connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this,
            [this] { setHost(false, false); });
    for (const char *signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"})
        m_bus.connect(watcherName, watcherPath, watcherName, QLatin1String(signal), this,
                      SLOT(registerWithWatcher()));
    registerWithWatcher();
}

StatusNotifierItem::~StatusNotifierItem()
{
    QDBusConnection::disconnectFromBus(connectionName);
}

/// The host reads an item once, when it registers: what it can show must be known before.
void StatusNotifierItem::registerWithWatcher()
{
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetConnectionUnixProcessID"));
    call << watcherName;
    whenAnswered(m_bus.asyncCall(call), [this](const QDBusMessage &reply) {
        const QDBusReply<uint> pid = reply;
        if (!pid.isValid()) {
            setHost(false, false);
            return;
        }
        const QString host = processName(pid.value());
        m_menu->setKeyNames(keyNames(host));
        setStyle(numberStyle(host));
        registerInStyle();
    });
}

void StatusNotifierItem::registerInStyle()
{
    auto call = QDBusMessage::createMethodCall(watcherName, watcherPath, watcherName,
                                               QStringLiteral("RegisterStatusNotifierItem"));
    call.setAutoStartService(false);
    call << m_bus.baseService();
    whenAnswered(m_bus.asyncCall(call), [this](const QDBusMessage &reply) {
        if (reply.type() == QDBusMessage::ErrorMessage)
            setHost(false, false);
        else
            askForHost();
    });
}

void StatusNotifierItem::setStyle(NumberStyle style)
{
    const bool hadLabel = m_style == NumberStyle::label;
    m_style = style;
    if (hadLabel != (style == NumberStyle::label))
        exportItem();
    redraw();
}

void StatusNotifierItem::exportItem()
{
    m_bus.unregisterObject(itemPath);
    m_itemObject = std::make_unique<QObject>();
    const QDBusObjectPath menu(menuPath);
    m_item = m_style == NumberStyle::label
                 ? new LabelledItemAdaptor(m_itemObject.get(), menu)
                 : new StatusNotifierItemAdaptor(m_itemObject.get(), menu);
    m_item->setClicked([this](QPoint position) { send({ClickType::leftMouseUp, position}); });
    m_item->setToolTip(m_toolTipTitle, m_toolTipText);
    m_bus.registerObject(itemPath, m_itemObject.get(), QDBusConnection::ExportAdaptors);
}

void StatusNotifierItem::askForHost()
{
    auto call = QDBusMessage::createMethodCall(watcherName, watcherPath,
                                               QStringLiteral("org.freedesktop.DBus.Properties"),
                                               QStringLiteral("Get"));
    call << watcherName << QStringLiteral("IsStatusNotifierHostRegistered");
    whenAnswered(m_bus.asyncCall(call), [this](const QDBusMessage &reply) {
        const QDBusReply<QDBusVariant> hasHost = reply;
        setHost(true, hasHost.isValid() && hasHost.value().variant().toBool());
    });
}

void StatusNotifierItem::whenAnswered(const QDBusPendingCall &call,
                                      std::function<void(const QDBusMessage &)> use)
{
    auto *watcher = new QDBusPendingCallWatcher(call, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, use = std::move(use)] {
        watcher->deleteLater();
        use(watcher->reply());
    });
}

void StatusNotifierItem::setHost(bool hasWatcher, bool hasHost)
{
    m_hasWatcher = hasWatcher;
    m_hasHost = hasHost;
    Q_EMIT hostChanged();
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
    m_toolTipTitle = title;
    m_toolTipText = text;
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
    for (const int side : statusIconSides)
        icon.append(DBusPixmap::fromImage(draw(side)));
    m_item->setIcon(icon);
    m_item->setLabel(m_style == NumberStyle::label ? m_title.text : QString());
}

} // namespace tidewick
