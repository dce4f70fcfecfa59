#pragma once

#include "platform/tray/DBusMenu.h"
#include "platform/tray/TrayHost.h"
#include "platform/tray/TrayPresenter.h"

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>

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

    /// Whether a bar shows the item; nothing until that is known.
    std::optional<bool> isShown() const { return m_isShown; }

Q_SIGNALS:
    void shownChanged();

private Q_SLOTS:
    void registerWithWatcher();

private:
    /// Registers the item as the watcher's process needs it, then asks whether a bar shows it.
    /// Answers to an earlier call do not count any more.
    QCoro::Task<> registerItem();
    /// The item counts as unseen. A watcher that gave no answer is asked again.
    void fail(const QDBusError &error);
    void exportItem();
    void setHost(const TrayHost &host);
    void setPresence(bool hasWatcher, bool hasHost);
    void changeWatcher(bool hasWatcher);
    void lookForBar();
    QCoro::Task<> addReader(QString reader);
    void removeReader(const QString &reader);
    void setShown(bool isShown);
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
    int m_registrations = 0; // begun, or ended with their watcher
    bool m_hasWatcher = false;
    bool m_hasHost = false; // says the watcher
    QDBusServiceWatcher m_menuReaders;
    QTimer m_barTimeout;
    std::optional<bool> m_isShown;
};

} // namespace tidewick
