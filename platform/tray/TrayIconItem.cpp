#include "platform/tray/TrayIconItem.h"

#include "platform/tray/StatusItemImage.h"

#include <QCursor>
#include <QTimer>

#include <utility>

namespace tidewick
{
namespace
{

/// A menu that opens while another window of ours closes loses the keyboard to the next window and
/// closes again.
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

TrayIconItem::TrayIconItem(ClickHandler clicked) : m_clicked(std::move(clicked))
{
    connect(&m_icon, &QSystemTrayIcon::activated, this, &TrayIconItem::send);
}

void TrayIconItem::show(const StatusItemState &state)
{
    if (state.image.isNull())
        return;
    QIcon icon;
    for (const int side : statusIconSides) {
        const QImage image = state.title.text.isEmpty()
                                 ? plainStatusImage(state.image, state.points, side)
                                 : badgedStatusImage(state.image, state.points, state.title, side);
        icon.addPixmap(QPixmap::fromImage(image));
    }
    m_icon.setIcon(icon);
    m_icon.setToolTip(state.toolTipTitle + QLatin1Char('\n') + state.toolTipText);
    m_icon.show();
}

void TrayIconItem::openMenu(const QList<MenuItem> &items)
{
    QTimer::singleShot(menuDelayMs, &m_menu, [this, items, at = QCursor::pos()] {
        fill(m_menu, items);
        m_menu.popup(at);
    });
}

void TrayIconItem::send(QSystemTrayIcon::ActivationReason reason)
{
    const bool isRight = reason == QSystemTrayIcon::Context;
    m_clicked(
        {isRight ? ClickType::rightMouseUp : ClickType::leftMouseUp, m_icon.geometry().center()});
}

} // namespace tidewick
