#include "platform/tray/StatusNotifierItem.h"

#include "platform/Logging.h"
#include "platform/tray/StatusItemImage.h"
#include "platform/tray/StatusNotifierItemAdaptor.h"

#include <QCoroDBusPendingReply>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QFile>
#include <QPointer>

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

QDBusMessage processQuestion()
{
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetConnectionUnixProcessID"));
    return call << watcherName;
}

QDBusMessage registrationOf(const QString &service)
{
    auto call = QDBusMessage::createMethodCall(watcherName, watcherPath, watcherName,
                                               QStringLiteral("RegisterStatusNotifierItem"));
    call.setAutoStartService(false);
    return call << service;
}

QDBusMessage hostQuestion()
{
    auto call = QDBusMessage::createMethodCall(watcherName, watcherPath,
                                               QStringLiteral("org.freedesktop.DBus.Properties"),
                                               QStringLiteral("Get"));
    return call << watcherName << QStringLiteral("IsStatusNotifierHostRegistered");
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

StatusNotifierItem::StatusNotifierItem(ClickHandler clicked)
    : m_clicked(std::move(clicked)),
      m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName)),
      m_menuObject(std::make_unique<DBusObject>()),
      m_menu(new DBusMenu(m_menuObject.get()))
{
    m_menu->setWanted([this] { m_clicked({ClickType::rightMouseUp, {}}); });
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
    // Not at once: whoever makes the item is connected to it only afterwards.
    QMetaObject::invokeMethod(this, &StatusNotifierItem::registerWithWatcher, Qt::QueuedConnection);
}

StatusNotifierItem::~StatusNotifierItem()
{
    QDBusConnection::disconnectFromBus(connectionName);
}

void StatusNotifierItem::registerWithWatcher()
{
    registerItem();
}

/// A host reads an item once, when it registers. So the style of the host must be known before.
QCoro::Task<> StatusNotifierItem::registerItem()
{
    const QPointer<StatusNotifierItem> self(this);
    const QDBusPendingReply<uint> process = m_bus.asyncCall(processQuestion());
    co_await process;
    if (!self)
        co_return;
    if (!process.isValid()) {
        setHost(false, false);
        co_return;
    }
    const QString host = processName(process.value());
    qCDebug(platformLog) << "status notifier items are listed by" << host;
    m_menu->setKeyNames(keyNames(host));
    setStyle(numberStyle(host));

    const QDBusPendingReply<> registration = m_bus.asyncCall(registrationOf(m_bus.baseService()));
    co_await registration;
    if (!self)
        co_return;
    if (!registration.isValid()) {
        setHost(false, false);
        co_return;
    }

    const QDBusPendingReply<QDBusVariant> hasHost = m_bus.asyncCall(hostQuestion());
    co_await hasHost;
    if (self)
        setHost(true, hasHost.isValid() && hasHost.value().variant().toBool());
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
    m_item->setClicked([this](QPoint position) { m_clicked({ClickType::leftMouseUp, position}); });
    m_item->setToolTip(m_state.toolTipTitle, m_state.toolTipText);
    m_bus.registerObject(itemPath, m_itemObject.get(), QDBusConnection::ExportAdaptors);
}

void StatusNotifierItem::setHost(bool hasWatcher, bool hasHost)
{
    qCDebug(platformLog) << "status notifier items: listed" << hasWatcher << "shown" << hasHost;
    m_hasWatcher = hasWatcher;
    m_hasHost = hasHost;
    Q_EMIT hostChanged();
}

void StatusNotifierItem::show(const StatusItemState &state)
{
    m_state = state;
    m_item->setToolTip(state.toolTipTitle, state.toolTipText);
    redraw();
}

void StatusNotifierItem::openMenu(const QList<MenuItem> &items)
{
    m_menu->setItems(items);
}

void StatusNotifierItem::redraw()
{
    if (m_state.image.isNull())
        return;
    const auto draw = [this](int side) {
        if (m_state.title.text.isEmpty() || m_style == NumberStyle::label)
            return plainStatusImage(m_state.image, m_state.points, side);
        if (m_style == NumberStyle::wide)
            return wideStatusImage(m_state.image, m_state.points, m_state.title, side);
        return badgedStatusImage(m_state.image, m_state.points, m_state.title, side);
    };
    QList<DBusPixmap> icon;
    for (const int side : statusIconSides)
        icon.append(DBusPixmap::fromImage(draw(side)));
    m_item->setIcon(icon);
    m_item->setLabel(m_style == NumberStyle::label ? m_state.title.text : QString());
}

} // namespace tidewick
