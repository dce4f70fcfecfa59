#include "platform/tray/DesktopStatusItem.h"

#include <cstdio>
#include <utility>

namespace tidewick
{

DesktopStatusItem::DesktopStatusItem()
{
    connect(&m_notifierItem, &StatusNotifierItem::hostChanged, this,
            &DesktopStatusItem::chooseTray);
    connect(&m_x11Tray, &X11Tray::presenceChanged, this, &DesktopStatusItem::chooseTray);
}

/// Called for the first time when it is known whether there is a watcher.
void DesktopStatusItem::chooseTray()
{
    const bool wantsIcon = m_x11Tray.isPresent() && !m_notifierItem.hasWatcher();
    if (!wantsIcon) {
        m_trayIcon.reset();
    } else if (!m_trayIcon) {
        m_trayIcon = std::make_unique<TrayIconItem>();
        m_trayIcon->setAction(m_action);
        m_trayIcon->setToolTip(m_toolTipTitle, m_toolTipText);
        m_trayIcon->setAttributedTitle(m_title);
        m_trayIcon->setImage(m_image, m_points);
    }
    if (!isInTray() && !std::exchange(m_reportedMissingTray, true))
        std::fputs("tidewick: this desktop shows no status items; waiting for a tray\n", stderr);
}

void DesktopStatusItem::setImage(const QImage &image, QSize points)
{
    m_image = image;
    m_points = points;
    onEach([&](StatusItem &item) { item.setImage(image, points); });
}

void DesktopStatusItem::setAttributedTitle(const StatusTitle &title)
{
    m_title = title;
    onEach([&](StatusItem &item) { item.setAttributedTitle(title); });
}

void DesktopStatusItem::setImagePosition(ImagePosition position)
{
    onEach([&](StatusItem &item) { item.setImagePosition(position); });
}

void DesktopStatusItem::setToolTip(const QString &title, const QString &text)
{
    m_toolTipTitle = title;
    m_toolTipText = text;
    onEach([&](StatusItem &item) { item.setToolTip(title, text); });
}

void DesktopStatusItem::setAction(const std::function<void()> &action)
{
    m_action = action;
    onEach([&](StatusItem &item) { item.setAction(action); });
}

std::optional<ClickEvent> DesktopStatusItem::currentEvent() const
{
    const auto event = m_notifierItem.currentEvent();
    return event || !m_trayIcon ? event : m_trayIcon->currentEvent();
}

void DesktopStatusItem::setMenu(const QList<MenuItem> &items)
{
    onEach([&](StatusItem &item) { item.setMenu(items); });
}

void DesktopStatusItem::performClick()
{
    if (m_trayIcon)
        m_trayIcon->performClick();
    else
        m_notifierItem.performClick();
}

} // namespace tidewick
