#pragma once

#include "platform/StatusItem.h"
#include "platform/tray/DBusMenu.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QObject>

#include <memory>

class QDBusMessage;
class QDBusPendingCall;

namespace tidewick
{

class StatusNotifierItemAdaptor;

/// How a host shows a number: its own label beside the icon, a picture that may be wider than
/// high, or inside a square picture.
enum class NumberStyle { label, wide, square };

/// The style for the host whose process is called `processName` (/proc/PID/comm, proc(5)).
NumberStyle numberStyle(const QString &processName);

/// The names that the same host knows keys by.
KeyNames keyNames(const QString &processName);

/// A status item of the StatusNotifierItem protocol, at /StatusNotifierItem on a bus connection of
/// its own, since an item leaves the bar only when its connection goes. It registers
/// whenever a watcher or a host appears, so it outlives a tray that restarts or starts late.
class StatusNotifierItem : public QObject, public StatusItem
{
    Q_OBJECT

public:
    StatusNotifierItem();
    ~StatusNotifierItem() override;
    Q_DISABLE_COPY_MOVE(StatusNotifierItem)

    void setImage(const QImage &image, QSize points) override;
    void setAttributedTitle(const StatusTitle &title) override;
    void setImagePosition(ImagePosition position) override;
    void setToolTip(const QString &title, const QString &text) override;
    void setAction(const std::function<void()> &action) override;
    std::optional<ClickEvent> currentEvent() const override { return m_event; }
    void setMenu(const QList<MenuItem> &items) override;
    /// The tray draws the menu: it is published, and stays so when it is detached.
    void performClick() override;

    /// Whether something keeps the session's list of items (true until that is known), and whether
    /// a bar shows them.
    bool hasWatcher() const { return m_hasWatcher; }
    bool hasHost() const { return m_hasHost; }

Q_SIGNALS:
    void hostChanged();

private Q_SLOTS:
    void registerWithWatcher();

private:
    void askForHost();
    void exportItem();
    void setStyle(NumberStyle style);
    void registerInStyle();
    void whenAnswered(const QDBusPendingCall &call, std::function<void(const QDBusMessage &)> use);
    void setHost(bool hasWatcher, bool hasHost);
    void redraw();
    void send(const ClickEvent &event);

    QDBusConnection m_bus;
    std::unique_ptr<QObject> m_itemObject;
    StatusNotifierItemAdaptor *m_item = nullptr;
    std::unique_ptr<DBusObject> m_menuObject;
    DBusMenu *m_menu;

    NumberStyle m_style = NumberStyle::square;
    QImage m_image;
    QSize m_points;
    StatusTitle m_title;
    QString m_toolTipTitle;
    QString m_toolTipText;
    std::function<void()> m_action;
    std::optional<ClickEvent> m_event;
    QList<MenuItem> m_attachedMenu;
    bool m_hasWatcher = true; // until it is known
    bool m_hasHost = false;
};

} // namespace tidewick
