#pragma once

#include "platform/StatusItem.h"

#include <QMenu>
#include <QSystemTrayIcon>

namespace tidewick
{

/// A status item in a tray of the old X11 kind, where the toolkit draws the icon and this program
/// its menu. Make one only while there is such a tray and nothing keeps a list of status notifier
/// items: the toolkit decides once, at its first use, which of the two it serves.
class TrayIconItem : public QObject, public StatusItem
{
    Q_OBJECT

public:
    TrayIconItem();

    void setImage(const QImage &image, QSize points) override;
    void setAttributedTitle(const StatusTitle &title) override;
    void setImagePosition(ImagePosition position) override;
    void setToolTip(const QString &title, const QString &text) override;
    void setAction(const std::function<void()> &action) override { m_action = action; }
    std::optional<ClickEvent> currentEvent() const override { return m_event; }
    void setMenu(const QList<MenuItem> &items) override { m_attachedMenu = items; }
    /// The menu opens at the pointer, a moment later.
    void performClick() override;

private:
    void send(QSystemTrayIcon::ActivationReason reason);
    void redraw();

    QSystemTrayIcon m_icon;
    QMenu m_menu;
    QImage m_image;
    QSize m_points;
    StatusTitle m_title;
    std::function<void()> m_action;
    std::optional<ClickEvent> m_event;
    QList<MenuItem> m_attachedMenu;
};

} // namespace tidewick
