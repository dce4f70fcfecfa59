#include "platform/tray/TrayIconItem.h"

#include "platform/tray/StatusItemImage.h"

#include <QCursor>
#include <QTimer>

namespace tidewick
{
namespace
{

/// A menu that opens in the moment another window of ours closes loses the keyboard to whatever
/// gets it next, and closes again.
constexpr int menuDelayMs = 150;

void fill(QMenu &menu, const QList<MenuItem> &items)
{
    menu.clear();
    for (const MenuItem &item : items) {
        if (item.title.isEmpty()) {
            menu.addSeparator();
            continue;
        }
        QAction *const action = menu.addAction(item.title);
        action->setEnabled(item.isEnabled);
        if (!item.keyEquivalent.isEmpty())
            action->setShortcut(QKeySequence(QStringLiteral("Ctrl+") + item.keyEquivalent));
        action->setShortcutVisibleInContextMenu(true);
        QObject::connect(action, &QAction::triggered, &menu, item.action, Qt::QueuedConnection);
    }
}

} // namespace

TrayIconItem::TrayIconItem()
{
    connect(&m_icon, &QSystemTrayIcon::activated, this, &TrayIconItem::send);
}

void TrayIconItem::setImage(const QImage &image, QSize points)
{
    if (image == m_image && points == m_points)
        return;
    m_image = image;
    m_points = points;
    redraw();
}

void TrayIconItem::setAttributedTitle(const StatusTitle &title)
{
    if (title == m_title)
        return;
    m_title = title;
    redraw();
}

void TrayIconItem::setImagePosition(ImagePosition /*position*/)
{
    // The number is inside the picture.
}

void TrayIconItem::setToolTip(const QString &title, const QString &text)
{
    m_icon.setToolTip(title + QLatin1Char('\n') + text);
}

void TrayIconItem::send(QSystemTrayIcon::ActivationReason reason)
{
    if (!m_action)
        return;
    const bool isRight = reason == QSystemTrayIcon::Context;
    m_event = ClickEvent{isRight ? ClickType::rightMouseUp : ClickType::leftMouseUp,
                         m_icon.geometry().center()};
    m_action();
    m_event.reset();
}

void TrayIconItem::performClick()
{
    QTimer::singleShot(menuDelayMs, &m_menu, [this, items = m_attachedMenu, at = QCursor::pos()] {
        fill(m_menu, items);
        m_menu.popup(at);
    });
}

void TrayIconItem::redraw()
{
    if (m_image.isNull())
        return;
    QIcon icon;
    for (const int side : statusIconSides) {
        const QImage image = m_title.text.isEmpty()
                                 ? plainStatusImage(m_image, m_points, side)
                                 : badgedStatusImage(m_image, m_points, m_title, side);
        icon.addPixmap(QPixmap::fromImage(image));
    }
    m_icon.setIcon(icon);
    m_icon.show();
}

} // namespace tidewick
