#pragma once

#include "platform/tray/DBusMenu.h"
#include "platform/tray/TrayHost.h"
#include "platform/tray/TrayPresenter.h"

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QObject>

#include <memory>

namespace tidewick
{

class StatusNotifierItemAdaptor;

/// A status item of the StatusNotifierItem protocol, at /StatusNotifierItem on a bus connection of
/// its own, because an item leaves the bar only when its connection closes. It registers whenever a
/// watcher or a host appears, so it works with a tray that restarts or starts late.
class StatusNotifierItem : public QObject, public TrayPresenter
{
    Q_OBJECT

public:
    /// `busAddress` is that of the session's bus if it is empty.
    explicit StatusNotifierItem(ClickHandler clicked, const QString &busAddress = {});
    ~StatusNotifierItem() override;
    Q_DISABLE_COPY_MOVE(StatusNotifierItem)

    void show(const StatusItemState &state) override;
    /// The tray draws the menu: it is published, and stays published. Where no click reaches this
    /// program, the first entry is one that stands for a left click.
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
    /// Registers the item as the watcher's process needs it, then asks whether a bar shows it.
    QCoro::Task<> registerItem();
    void exportItem();
    void setHost(const TrayHost &host);
    void setPresence(bool hasWatcher, bool hasHost);
    void redraw();

    const ClickHandler m_clicked;
    QDBusConnection m_bus;
    std::unique_ptr<QObject> m_itemObject;
    StatusNotifierItemAdaptor *m_item = nullptr;
    std::unique_ptr<DBusObject> m_menuObject;
    DBusMenu *m_menu;

    TrayHost m_host;
    QPoint m_menuPlace; // the pointer's when the menu was about to open, so on the item
    StatusItemState m_state;
    bool m_hasWatcher = true; // until it is known
    bool m_hasHost = false;
};

} // namespace tidewick
