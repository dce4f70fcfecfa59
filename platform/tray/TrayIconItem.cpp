#include "platform/tray/TrayIconItem.h"

#include "platform/tray/StatusItemImage.h"

#include <QApplication>
#include <QCursor>
#include <QMouseEvent>
#include <QStyle>
#include <QToolTip>

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

void TrayIconMenu::mousePressEvent(QMouseEvent *event)
{
    constexpr int enoughMoves = 10;
    for (int moves = 0; moves < enoughMoves; ++moves) {
        QMouseEvent move(QEvent::MouseMove, event->position(), event->globalPosition(),
                         Qt::NoButton, Qt::NoButton, event->modifiers());
        mouseMoveEvent(&move);
    }
    QMenu::mousePressEvent(event);
}

TrayIconItem::TrayIconItem(ClickHandler clicked, xcb_window_t tray)
    : m_clicked(std::move(clicked)), m_tray(tray)
{
    m_toolTipDelay.setSingleShot(true);
    m_toolTipDelay.setInterval(QApplication::style()->styleHint(QStyle::SH_ToolTip_WakeUpDelay));
    connect(&m_toolTipDelay, &QTimer::timeout, this, [this] {
        QToolTip::showText(QCursor::pos(),
                           m_state.toolTipTitle + QLatin1Char('\n') + m_state.toolTipText);
    });
}

TrayIconItem::~TrayIconItem()
{
    hideToolTip();
}

void TrayIconItem::show(const StatusItemState &state)
{
    m_state = state;
    if (state.image.isNull())
        return;
    if (m_window) {
        m_window->update();
        return;
    }
    m_window = std::make_unique<TrayIconWindow>(m_tray, [this](int side) { return picture(side); });
    connect(m_window.get(), &TrayIconWindow::pressed, this, &TrayIconItem::send);
    connect(m_window.get(), &TrayIconWindow::entered, &m_toolTipDelay, qOverload<>(&QTimer::start));
    connect(m_window.get(), &TrayIconWindow::left, this, &TrayIconItem::hideToolTip);
}

QImage TrayIconItem::picture(int side) const
{
    return m_state.title.text.isEmpty()
               ? plainStatusImage(m_state.image, m_state.points, side)
               : badgedStatusImage(m_state.image, m_state.points, m_state.title, side);
}

void TrayIconItem::hideToolTip()
{
    m_toolTipDelay.stop();
    QToolTip::hideText();
}

void TrayIconItem::openMenu(const QList<MenuItem> &items)
{
    QTimer::singleShot(menuDelayMs, &m_menu, [this, items, at = QCursor::pos()] {
        fill(m_menu, items);
        m_menu.popup(at);
    });
}

void TrayIconItem::send(int button, QPoint place)
{
    hideToolTip();
    if (button > XCB_BUTTON_INDEX_3) // the wheel
        return;
    const bool isRight = button == XCB_BUTTON_INDEX_3;
    m_clicked({isRight ? ClickType::rightMouseUp : ClickType::leftMouseUp, place, true});
}

} // namespace tidewick
