#include "platform/tray/StatusNotifierItem.h"

#include "platform/Logging.h"
#include "platform/tray/StatusItemImage.h"
#include "platform/tray/StatusNotifierItemAdaptor.h"

#include <QCoreApplication>
#include <QCoroDBusPendingReply>
#include <QCursor>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDir>
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

/// A host comes at most this much later than its watcher, and a bar than its host. One that comes
/// later still takes the icon then.
constexpr int barTimeoutMs = 500;

/// The pause before a watcher that gave no answer is asked again.
constexpr int retryMs = 1000;

const QString iconName = QStringLiteral("org.tidewick.Tidewick-status");

/// The directory of icon themes beside the program, where the icon is even if no theme that the
/// host knows has it.
QString iconThemePath()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() +
                           QStringLiteral("/../share/icons"));
}

QDBusConnection connection(const QString &address)
{
    return address.isEmpty()
               ? QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName)
               : QDBusConnection::connectToBus(address, connectionName);
}

QString processName(uint pid)
{
    QFile comm(QStringLiteral("/proc/%1/comm").arg(pid));
    if (!comm.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(comm.readAll()).trimmed();
}

/// A question to the bus about who has the name `name`.
QDBusMessage ownerQuestion(const char *method, const QString &name)
{
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QLatin1String(method));
    return call << name;
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

StatusNotifierItem::StatusNotifierItem(ClickHandler clicked, const QString &busAddress)
    : m_clicked(std::move(clicked)),
      m_bus(connection(busAddress)),
      m_menuObject(std::make_unique<DBusObject>()),
      m_menu(new DBusMenu(m_menuObject.get()))
{
    m_menu->setWanted([this] {
        m_menuPlace = QCursor::pos();
        m_clicked({ClickType::rightMouseUp, {}});
    });
    m_menu->setRead([this](const QString &reader) {
        if (!m_menuReaders.watchedServices().contains(reader))
            addReader(reader);
    });
    m_menuReaders.setConnection(m_bus);
    m_menuReaders.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    connect(&m_menuReaders, &QDBusServiceWatcher::serviceUnregistered, this,
            &StatusNotifierItem::removeReader);
    m_barTimeout.setSingleShot(true);
    m_barTimeout.setInterval(barTimeoutMs);
    connect(&m_barTimeout, &QTimer::timeout, this, [this] { setShown(false); });
    exportItem();
    m_bus.registerObject(menuPath, m_menuObject.get(), QDBusConnection::ExportAdaptors);
    auto *watcher =
        new QDBusServiceWatcher(watcherName, m_bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString & /*name*/, const QString & /*before*/, const QString &now) {
                changeWatcher(!now.isEmpty());
            });
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

/// The name may pass from one process to the next that waits for it.
void StatusNotifierItem::changeWatcher(bool hasWatcher)
{
    m_menuReaders.setWatchedServices({}); // the bars of the one before
    if (hasWatcher) {
        registerItem();
    } else {
        ++m_registrations; // its answers do not count any more
        setPresence(false, false);
    }
}

/// A host reads an item once, when it registers. So the style of the host must be known before.
QCoro::Task<> StatusNotifierItem::registerItem()
{
    const QPointer<StatusNotifierItem> self(this);
    const int number = ++m_registrations;
    const auto isOver = [self, number] {
        return !self || self->m_registrations != number;
    };
    const QDBusPendingReply<uint> process =
        m_bus.asyncCall(ownerQuestion("GetConnectionUnixProcessID", watcherName));
    co_await process;
    if (isOver())
        co_return;
    if (!process.isValid()) {
        fail(process.error());
        co_return;
    }
    const QString host = processName(process.value());
    qCDebug(platformLog) << "status notifier items are listed by" << host;
    setHost(trayHost(host));

    const QDBusPendingReply<> registration = m_bus.asyncCall(registrationOf(m_bus.baseService()));
    co_await registration;
    if (isOver())
        co_return;
    if (!registration.isValid()) {
        fail(registration.error());
        co_return;
    }

    const QDBusPendingReply<QDBusVariant> hasHost = m_bus.asyncCall(hostQuestion());
    co_await hasHost;
    if (isOver())
        co_return;
    if (!hasHost.isValid()) {
        fail(hasHost.error());
        co_return;
    }
    setPresence(true, hasHost.value().variant().toBool());
}

/// A desktop that was too busy to answer in time still has the registration, and shows the item as
/// soon as it can.
void StatusNotifierItem::fail(const QDBusError &error)
{
    setPresence(false, false);
    if (error.type() == QDBusError::NoReply)
        QTimer::singleShot(retryMs, this, &StatusNotifierItem::registerWithWatcher);
}

void StatusNotifierItem::setHost(const TrayHost &host)
{
    m_menu->setKeyNames(host.keys);
    if (std::exchange(m_host, host) != host)
        exportItem();
    redraw();
}

void StatusNotifierItem::exportItem()
{
    m_bus.unregisterObject(itemPath);
    m_itemObject = std::make_unique<QObject>();
    const QDBusObjectPath menu(menuPath);
    m_item = m_host.number == NumberStyle::label
                 ? new LabelledItemAdaptor(m_itemObject.get(), menu)
                 : new StatusNotifierItemAdaptor(m_itemObject.get(), menu);
    if (!m_host.takesPixels)
        m_item->setIconName(iconName, iconThemePath());
    m_item->setClicked([this](QPoint position) {
        m_clicked({ClickType::leftMouseUp, position, m_host.countsPixels});
    });
    m_item->setToolTip(m_state.toolTipTitle, m_state.toolTipText);
    m_bus.registerObject(itemPath, m_itemObject.get(), QDBusConnection::ExportAdaptors);
}

void StatusNotifierItem::setPresence(bool hasWatcher, bool hasHost)
{
    qCDebug(platformLog) << "status notifier items: listed" << hasWatcher << "host" << hasHost;
    m_hasWatcher = hasWatcher;
    m_hasHost = hasHost;
    lookForBar();
}

/// The indicator service claims to have a host whether or not a bar shows its items, and nothing on
/// the bus tells which bars are connected to it. But it reads only the properties of an item, and a
/// bar that shows the item reads the item's menu at once. So a bar is there as long as a reader of
/// the menu is. Seen with the service 22.2: the indicator plugins of Xfce 4.18 and MATE 1.26, and
/// Xfce's own tray where it starts last, show the item and read the menu. The trays of LXQt 1.2 and
/// MATE 1.27, and Xfce's where the service knows no item yet, do neither.
void StatusNotifierItem::lookForBar()
{
    const bool hasBar =
        m_hasHost && (m_host.tellsOfBars || !m_menuReaders.watchedServices().isEmpty());
    if (m_hasWatcher && !hasBar) {
        m_barTimeout.start();
        return;
    }
    m_barTimeout.stop();
    setShown(hasBar);
}

QCoro::Task<> StatusNotifierItem::addReader(QString reader)
{
    m_menuReaders.addWatchedService(reader);
    if (m_hasHost)
        lookForBar();
    // It may have left before its end was watched for.
    const QPointer<StatusNotifierItem> self(this);
    const QDBusPendingReply<bool> isThere = m_bus.asyncCall(ownerQuestion("NameHasOwner", reader));
    co_await isThere;
    if (self && isThere.isValid() && !isThere.value())
        removeReader(reader);
}

void StatusNotifierItem::removeReader(const QString &reader)
{
    m_menuReaders.removeWatchedService(reader);
    if (m_hasHost)
        lookForBar();
}

void StatusNotifierItem::setShown(bool isShown)
{
    qCDebug(platformLog) << "status notifier item: shown" << isShown;
    m_isShown = isShown;
    Q_EMIT shownChanged();
}

void StatusNotifierItem::show(const StatusItemState &state)
{
    m_state = state;
    m_item->setToolTip(state.toolTipTitle, state.toolTipText);
    redraw();
}

void StatusNotifierItem::openMenu(const QList<MenuItem> &items)
{
    QList<MenuItem> entries = items;
    if (!m_host.activates)
        entries.prepend({QStringLiteral("Show Tidewick"), {}, [this] {
                             m_clicked({.type = ClickType::leftMouseUp,
                                        .position = m_menuPlace,
                                        .isInMenu = true});
                         }});
    m_menu->setItems(entries);
}

void StatusNotifierItem::redraw()
{
    if (m_state.image.isNull())
        return;
    const auto draw = [this](int side) {
        if (m_state.title.text.isEmpty() || m_host.number == NumberStyle::label)
            return plainStatusImage(m_state.image, m_state.points, side);
        if (m_host.number == NumberStyle::wide)
            return wideStatusImage(m_state.image, m_state.points, m_state.title, side);
        return badgedStatusImage(m_state.image, m_state.points, m_state.title, side);
    };
    QList<DBusPixmap> icon;
    for (const int side : statusIconSides)
        icon.append(DBusPixmap::fromImage(draw(side)));
    m_item->setIcon(icon);
    m_item->setLabel(m_host.number == NumberStyle::label ? m_state.title.text : QString());
}

} // namespace tidewick
