#include "platform/PopoverWindow.h"

#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QQmlEngine>
#include <QScreen>

#include <algorithm>

namespace tidewick
{
namespace
{

constexpr int barGap = 6; // points between the bar and the popover

/// Below a bar at the top, above one at the bottom, and wholly within the screen.
QPoint placeNear(QPoint pointer, QSize size, QRect available)
{
    const int x = pointer.x() - size.width() / 2;
    const bool isBelow = pointer.y() < available.center().y();
    const int y = isBelow ? std::max(pointer.y(), available.top()) + barGap
                          : std::min(pointer.y(), available.bottom()) - size.height() - barGap;
    const QSize room = available.size() - size;
    return {std::clamp(x, available.left(), available.left() + std::max(0, room.width())),
            std::clamp(y, available.top(), available.top() + std::max(0, room.height()))};
}

} // namespace

PopoverWindow::PopoverWindow()
{
    setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    setTitle(QStringLiteral("Tidewick"));
    setResizeMode(QQuickView::SizeRootObjectToView);
    engine()->addImportPath(QStringLiteral("qrc:/qt/qml"));
}

void PopoverWindow::setContentSize(QSize points)
{
    resize(points);
}

void PopoverWindow::setContentView(const QUrl &view, const QVariantMap &properties)
{
    setInitialProperties(properties);
    setSource(view);
}

void PopoverWindow::setBehavior(PopoverBehavior behavior)
{
    m_behavior = behavior;
}

void PopoverWindow::show(const std::optional<ClickEvent> & /*event*/)
{
    const QPoint pointer = QCursor::pos();
    QScreen *const under = QGuiApplication::screenAt(pointer);
    const QScreen *const target = under != nullptr ? under : QGuiApplication::primaryScreen();
    setPosition(placeNear(pointer, size(), target->availableGeometry()));
    QQuickView::show();
    raise();
}

void PopoverWindow::keyPressEvent(QKeyEvent *event)
{
    QQuickView::keyPressEvent(event);
    if (!event->isAccepted() && event->key() == Qt::Key_Escape)
        hide();
}

void PopoverWindow::focusOutEvent(QFocusEvent *event)
{
    QQuickView::focusOutEvent(event);
    if (m_behavior == PopoverBehavior::transient)
        hide();
}

} // namespace tidewick
