#pragma once

#include "platform/tray/StatusNotifierItem.h"
#include "platform/tray/TrayIconItem.h"
#include "platform/tray/X11Tray.h"

#include <QTimer>

#include <chrono>
#include <memory>

namespace tidewick
{

/// The status item in whatever tray the desktop has, now or later: a status notifier item, or an
/// icon in the old X11 tray if no bar shows that item.
class DesktopStatusItem : public QObject, public StatusItem
{
    Q_OBJECT

public:
    /// `busAddress` is that of the session's bus if it is empty. A desktop that starts with the
    /// program has `patience` to show the item before a line on standard error says it does not.
    explicit DesktopStatusItem(const QString &busAddress = {},
                               std::chrono::milliseconds patience = std::chrono::seconds(5));

    void setImage(const QImage &image, QSize points) override;
    void setAttributedTitle(const StatusTitle &title) override;
    void setImagePosition(ImagePosition position) override;
    void setToolTip(const QString &title, const QString &text) override;
    void setAction(const std::function<void()> &action) override;
    std::optional<ClickEvent> currentEvent() const override { return m_event; }
    void setMenu(const QList<MenuItem> &items) override;
    void performClick() override;

    /// Whether the desktop has answered if it shows the item.
    bool isTrayKnown() const { return m_notifierItem.isShown().has_value(); }

    /// Whether the user sees it.
    bool isInTray() const
    {
        return m_notifierItem.isShown().value_or(false) || m_trayIcon != nullptr;
    }

private:
    void chooseTray();
    /// Says once that there is no tray when there has been none for long.
    void watchForMissingTray();
    /// Shows the state if it differs from the one shown.
    void show(const StatusItemState &state);
    void send(const ClickEvent &event);

    StatusItemState m_state;
    std::function<void()> m_action;
    std::optional<ClickEvent> m_event;
    QList<MenuItem> m_menu;
    QTimer m_missingTray;
    bool m_reportedMissingTray = false;

    StatusNotifierItem m_notifierItem;
    X11Tray m_x11Tray;
    std::unique_ptr<TrayIconItem> m_trayIcon;
};

} // namespace tidewick
