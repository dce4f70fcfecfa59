#pragma once

#include "platform/tray/DBusMenu.h"
#include "platform/tray/TrayPresenter.h"

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QObject>

#include <memory>

namespace tidewick
{

class StatusNotifierItemAdaptor;

/// How a host shows a number: as its own label beside the icon, in a picture that may be wider than
/// high, or in a square picture.
enum class NumberStyle { label, wide, square };

/// The style for the host whose process is called `processName` (/proc/PID/comm, proc(5)).
NumberStyle numberStyle(const QString &processName);

/// The names that the host uses for keys.
KeyNames keyNames(const QString &processName);

/// A status item of the StatusNotifierItem protocol, at /StatusNotifierItem on a bus connection of
/// its own, because an item leaves the bar only when its connection closes. It registers whenever a
/// watcher or a host appears, so it works with a tray that restarts or starts late.
class StatusNotifierItem : public QObject, public TrayPresenter
{
    Q_OBJECT

public:
    explicit StatusNotifierItem(ClickHandler clicked);
    ~StatusNotifierItem() override;
    Q_DISABLE_COPY_MOVE(StatusNotifierItem)

    void show(const StatusItemState &state) override;
    /// The tray draws the menu: it is published, and stays published.
    void openMenu(const QList<MenuItem> &items) override;

    /// Whether something keeps the session's list of items (true until that is known), and whether
    /// a bar shows them.
    bool hasWatcher() const { return m_hasWatcher; }
    bool hasHost() const { return m_hasHost; }

Q_SIGNALS:
    void hostChanged();

private Q_SLOTS:
    void registerWithWatcher();

private:
    /// Registers the item in the style of the watcher's process, then asks whether a bar shows it.
    QCoro::Task<> registerItem();
    void exportItem();
    void setStyle(NumberStyle style);
    void setHost(bool hasWatcher, bool hasHost);
    void redraw();

    const ClickHandler m_clicked;
    QDBusConnection m_bus;
    std::unique_ptr<QObject> m_itemObject;
    StatusNotifierItemAdaptor *m_item = nullptr;
    std::unique_ptr<DBusObject> m_menuObject;
    DBusMenu *m_menu;

    NumberStyle m_style = NumberStyle::square;
    StatusItemState m_state;
    bool m_hasWatcher = true; // until it is known
    bool m_hasHost = false;
};

} // namespace tidewick
