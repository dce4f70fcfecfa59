#include "platform/window/PopoverPlacement.h"

#include <algorithm>
#include <cstdlib>

namespace tidewick
{
namespace
{

constexpr int barGap = 6;        // points between the bar and the popover
constexpr int edgeStrip = 64;    // points from a screen's edge in which a bar may be
constexpr int itemReach = 16;    // points from any point on an item to beyond its end
constexpr int nearDistance = 64; // points between two readings of one place

enum class Edge { top, bottom, left, right };

/// A tray may tell any number, so the distance may be beyond the range of an int.
bool isNear(QPoint one, QPoint other)
{
    const qint64 across = qint64{one.x()} - other.x();
    const qint64 down = qint64{one.y()} - other.y();
    return std::abs(across) + std::abs(down) <= nearDistance;
}

bool isOnEdge(QPoint point, const QList<ScreenArea> &screens)
{
    return std::any_of(screens.begin(), screens.end(), [point](const ScreenArea &screen) {
        const QRect inner =
            screen.whole.adjusted(edgeStrip, edgeStrip, -edgeStrip, -edgeStrip) & screen.available;
        return screen.whole.contains(point) && !inner.contains(point);
    });
}

ScreenArea screenOf(QPoint point, const QList<ScreenArea> &screens)
{
    for (const ScreenArea &screen : screens) {
        if (screen.whole.contains(point))
            return screen;
    }
    return screens.value(0);
}

/// Only the nearest edge tells where a bar is that reserves no room. In a corner the bar counts as
/// horizontal, as most are.
Edge edgeWithoutRoom(QPoint anchor, const QRect &whole)
{
    const int above = anchor.y() - whole.top();
    const int below = whole.bottom() - anchor.y();
    if (std::min(above, below) <= edgeStrip)
        return above <= below ? Edge::top : Edge::bottom;
    if (anchor.x() - whole.left() <= edgeStrip)
        return Edge::left;
    if (whole.right() - anchor.x() <= edgeStrip)
        return Edge::right;
    return above <= below ? Edge::top : Edge::bottom;
}

Edge edgeOf(QPoint anchor, const ScreenArea &screen)
{
    if (anchor.y() < screen.available.top())
        return Edge::top;
    if (anchor.y() > screen.available.bottom())
        return Edge::bottom;
    if (anchor.x() < screen.available.left())
        return Edge::left;
    if (anchor.x() > screen.available.right())
        return Edge::right;
    return edgeWithoutRoom(anchor, screen.whole);
}

/// The part of the free area beyond an item at `anchor` on a bar at `edge`.
QRect roomBeside(QPoint anchor, Edge edge, const ScreenArea &screen)
{
    QRect room = screen.available;
    const int reach = room.contains(anchor) ? itemReach : 0;
    switch (edge) {
    case Edge::top:
        room.setTop(std::max(room.top(), anchor.y() + reach) + barGap);
        break;
    case Edge::bottom:
        room.setBottom(std::min(room.bottom(), anchor.y() - reach) - barGap);
        break;
    case Edge::left:
        room.setLeft(std::max(room.left(), anchor.x() + reach) + barGap);
        break;
    case Edge::right:
        room.setRight(std::min(room.right(), anchor.x() - reach) - barGap);
        break;
    }
    return room;
}

/// The position nearest to `wanted` at which a popover of `size` lies within `room`, or the
/// beginning of the room if the popover is larger.
QPoint clamped(QPoint wanted, QSize size, const QRect &room)
{
    const QSize slack = (room.size() - size).expandedTo(QSize(0, 0));
    return {std::clamp(wanted.x(), room.left(), room.left() + slack.width()),
            std::clamp(wanted.y(), room.top(), room.top() + slack.height())};
}

} // namespace

std::optional<QPoint> itemAnchor(const ItemTraces &traces)
{
    const bool isTold = traces.told && !traces.told->isNull();
    if (traces.pointer && (traces.isClick || (isTold && isNear(*traces.pointer, *traces.told))))
        return traces.pointer;
    if (isTold && isOnEdge(*traces.told, traces.screens))
        return traces.told;
    if (traces.pointer && isOnEdge(*traces.pointer, traces.screens))
        return traces.pointer;
    const bool isStillThere = traces.last && isOnEdge(*traces.last, traces.screens);
    return isStillThere ? traces.last : std::nullopt;
}

QPoint popoverPosition(QSize size, std::optional<QPoint> anchor, const QList<ScreenArea> &screens)
{
    const ScreenArea screen = anchor ? screenOf(*anchor, screens) : screens.value(0);
    const QPoint point = anchor.value_or(screen.available.topRight());
    const Edge edge = anchor ? edgeOf(point, screen) : Edge::top;
    const bool isHorizontal = edge == Edge::top || edge == Edge::bottom;
    const QRect room =
        anchor ? roomBeside(point, edge, screen) : screen.available.adjusted(0, barGap, 0, 0);
    QPoint wanted = point - QPoint(size.width() / 2, size.height() / 2);
    if (isHorizontal)
        wanted.setY(edge == Edge::top ? room.top() : room.bottom() - size.height() + 1);
    else
        wanted.setX(edge == Edge::left ? room.left() : room.right() - size.width() + 1);
    return clamped(clamped(wanted, size, room), size, screen.available);
}

} // namespace tidewick
