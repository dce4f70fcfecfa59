#include "platform/tray/DesktopStatusItem.h"

#include "platform/Logging.h"

#include <cstdio>

namespace tidewick
{

DesktopStatusItem::DesktopStatusItem(const QString &busAddress, std::chrono::milliseconds patience)
    : m_notifierItem([this](const ClickEvent &event) { send(event); }, busAddress)
{
    connect(&m_notifierItem, &StatusNotifierItem::shownChanged, this,
            &DesktopStatusItem::chooseTray);
    connect(&m_x11Tray, &X11Tray::changed, this, [this] {
        m_trayIcon.reset();
        chooseTray();
    });
    m_missingTray.setSingleShot(true);
    m_missingTray.setInterval(patience);
    connect(&m_missingTray, &QTimer::timeout, this, [this] {
        m_reportedMissingTray = true;
        std::fputs("tidewick: this desktop shows no status items; waiting for a tray\n", stderr);
    });
}

void DesktopStatusItem::chooseTray()
{
    const auto isShown = m_notifierItem.isShown();
    if (!isShown)
        return;
    const bool wantsIcon = m_x11Tray.isPresent() && !*isShown;
    qCDebug(platformLog) << "X11 tray: present" << m_x11Tray.isPresent() << "used" << wantsIcon;
    if (!wantsIcon) {
        m_trayIcon.reset();
    } else if (!m_trayIcon) {
        m_trayIcon = std::make_unique<TrayIconItem>(
            [this](const ClickEvent &event) { send(event); }, m_x11Tray.window());
        m_trayIcon->show(m_state);
    }
    watchForMissingTray();
}

void DesktopStatusItem::watchForMissingTray()
{
    if (isInTray())
        m_missingTray.stop();
    else if (!m_reportedMissingTray && !m_missingTray.isActive())
        m_missingTray.start();
}

void DesktopStatusItem::setImage(const QImage &image, QSize points)
{
    StatusItemState state = m_state;
    state.image = image;
    state.points = points;
    show(state);
}

void DesktopStatusItem::setAttributedTitle(const StatusTitle &title)
{
    StatusItemState state = m_state;
    state.title = title;
    show(state);
}

void DesktopStatusItem::setImagePosition(ImagePosition /*position*/)
{
    // Every tray puts the image first.
}

void DesktopStatusItem::setToolTip(const QString &title, const QString &text)
{
    StatusItemState state = m_state;
    state.toolTipTitle = title;
    state.toolTipText = text;
    show(state);
}

void DesktopStatusItem::setAction(const std::function<void()> &action)
{
    m_action = action;
}

void DesktopStatusItem::setMenu(const QList<MenuItem> &items)
{
    m_menu = items;
}

void DesktopStatusItem::performClick()
{
    if (m_trayIcon)
        m_trayIcon->openMenu(m_menu);
    else
        m_notifierItem.openMenu(m_menu);
}

void DesktopStatusItem::show(const StatusItemState &state)
{
    if (state == m_state)
        return;
    m_state = state;
    m_notifierItem.show(m_state);
    if (m_trayIcon)
        m_trayIcon->show(m_state);
}

void DesktopStatusItem::send(const ClickEvent &event)
{
    if (!m_action)
        return;
    m_event = event;
    m_action();
    m_event.reset();
}

} // namespace tidewick
