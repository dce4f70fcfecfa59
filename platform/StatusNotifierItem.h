#pragma once

#include "platform/StatusItem.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QObject>

#include <memory>

namespace tidewick
{

class DBusMenu;
class StatusNotifierItemAdaptor;

/// How a host shows a number: its own label beside the icon, a picture that may be wider than
/// high, or inside a square picture.
enum class NumberStyle { label, wide, square };

/// The style for the host whose process is called `processName` (/proc/PID/comm, proc(5)).
NumberStyle numberStyle(const QString &processName);

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

private Q_SLOTS:
    void registerWithWatcher();

private:
    void learnHost();
    void redraw();
    void send(const ClickEvent &event);

    QDBusConnection m_bus;
    StatusNotifierItemAdaptor *m_item;
    std::unique_ptr<QObject> m_menuObject;
    DBusMenu *m_menu;

    NumberStyle m_style = NumberStyle::square;
    QImage m_image;
    QSize m_points;
    StatusTitle m_title;
    std::function<void()> m_action;
    std::optional<ClickEvent> m_event;
    QList<MenuItem> m_attachedMenu;
    bool m_reportedMissingTray = false;
};

} // namespace tidewick
