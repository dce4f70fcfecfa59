#include "platform/window/PopoverPlacement.h"

#include <algorithm>
#include <cstdlib>

namespace tidewick
{
namespace
{

constexpr int gap = popoverGap;
constexpr int edgeStrip = 64;    // points from a screen's edge in which a bar may be
constexpr int itemReach = 16;    // points from any point on an item to beyond its end
constexpr int nearDistance = 64; // points between two readings of one place

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

/// The same place in points. Outside all screens it stays what it is.
QPoint fromPixels(QPoint place, const QList<ScreenArea> &screens)
{
    for (const ScreenArea &screen : screens) {
        const QPoint corner = screen.whole.topLeft();
        if (QRectF(corner, QSizeF(screen.whole.size()) * screen.pixelsPerPoint).contains(place))
            return corner + ((QPointF(place) - corner) / screen.pixelsPerPoint).toPoint();
    }
    return place;
}

/// What the tray may mean, the likely first.
QList<QPoint> readingsOf(const ItemTraces &traces)
{
    if (!traces.told || traces.told->isNull())
        return {};
    QList<QPoint> readings{*traces.told, fromPixels(*traces.told, traces.screens)};
    if (traces.isToldInPixels)
        readings.swapItemsAt(0, 1);
    return readings;
}

const ScreenArea *screenOf(QPoint point, const QList<ScreenArea> &screens)
{
    const auto screen =
        std::find_if(screens.begin(), screens.end(),
                     [point](const ScreenArea &one) { return one.whole.contains(point); });
    return screen == screens.end() ? nullptr : &*screen;
}

/// The edge at which a bar takes room. Of several bars, the one with the status items is more often
/// the upper one.
std::optional<Qt::Edge> barEdge(const ScreenArea &screen)
{
    if (screen.available.top() > screen.whole.top())
        return Qt::TopEdge;
    if (screen.available.bottom() < screen.whole.bottom())
        return Qt::BottomEdge;
    if (screen.available.left() > screen.whole.left())
        return Qt::LeftEdge;
    if (screen.available.right() < screen.whole.right())
        return Qt::RightEdge;
    return std::nullopt;
}

/// The edge whose bar holds the anchor.
std::optional<Qt::Edge> edgeOf(QPoint anchor, const ScreenArea &screen)
{
    if (anchor.y() < screen.available.top())
        return Qt::TopEdge;
    if (anchor.y() > screen.available.bottom())
        return Qt::BottomEdge;
    if (anchor.x() < screen.available.left())
        return Qt::LeftEdge;
    if (anchor.x() > screen.available.right())
        return Qt::RightEdge;
    return nearEdge(anchor, screen.whole);
}

bool isHorizontal(Qt::Edge edge)
{
    return edge == Qt::TopEdge || edge == Qt::BottomEdge;
}

/// The part of `free` that is clear of a bar at `edge`, and of the sides beside it.
QRect roomAt(Qt::Edge edge, QRect free)
{
    switch (edge) {
    case Qt::TopEdge:
        return free.adjusted(gap, gap, -gap, 0);
    case Qt::BottomEdge:
        return free.adjusted(gap, 0, -gap, -gap);
    case Qt::LeftEdge:
        return free.adjusted(gap, gap, 0, -gap);
    case Qt::RightEdge:
        return free.adjusted(0, gap, -gap, -gap);
    }
    return free;
}

/// The part of `free` beyond an item in it, on a bar at `edge` that takes no room.
QRect freeBeyond(QPoint anchor, Qt::Edge edge, QRect free)
{
    if (!free.contains(anchor))
        return free;
    switch (edge) {
    case Qt::TopEdge:
        free.setTop(anchor.y() + itemReach);
        break;
    case Qt::BottomEdge:
        free.setBottom(anchor.y() - itemReach);
        break;
    case Qt::LeftEdge:
        free.setLeft(anchor.x() + itemReach);
        break;
    case Qt::RightEdge:
        free.setRight(anchor.x() - itemReach);
        break;
    }
    return free;
}

/// The position nearest to `wanted` at which a popover of `size` lies within `room`, or the
/// beginning of the room if the popover is larger.
QPoint clamped(QPoint wanted, QSize size, const QRect &room)
{
    const QSize slack = (room.size() - size).expandedTo(QSize(0, 0));
    return {std::clamp(wanted.x(), room.left(), room.left() + slack.width()),
            std::clamp(wanted.y(), room.top(), room.top() + slack.height())};
}

/// Against the bar at `edge`, and along it as near to `anchor` as `room` allows.
QPoint positionInRoom(QSize size, QPoint anchor, Qt::Edge edge, const ScreenArea &screen,
                      const QRect &room)
{
    QPoint wanted = anchor - QPoint(size.width() / 2, size.height() / 2);
    if (isHorizontal(edge))
        wanted.setY(edge == Qt::TopEdge ? room.top() : room.bottom() - size.height() + 1);
    else
        wanted.setX(edge == Qt::LeftEdge ? room.left() : room.right() - size.width() + 1);
    return clamped(clamped(wanted, size, room), size, screen.available);
}

/// Where a stretch of `length` leaves `point` out: before or after it, wherever there is room
/// between `first` and `last`, else as `wanted`.
int clearOf(int point, int wanted, int length, int first, int last)
{
    const int before = point - itemReach - gap - length;
    const int after = point + itemReach + gap;
    if (before >= first)
        return before;
    return after + length - 1 <= last ? after : wanted;
}

/// Moved along the bar at `edge` until the pointer at `anchor` is not on the popover.
QPoint clearOfPointer(QPoint position, QSize size, QPoint anchor, Qt::Edge edge, const QRect &room)
{
    if (!QRect(position, size).contains(anchor))
        return position;
    if (isHorizontal(edge))
        position.setX(clearOf(anchor.x(), position.x(), size.width(), room.left(), room.right()));
    else
        position.setY(clearOf(anchor.y(), position.y(), size.height(), room.top(), room.bottom()));
    return position;
}

QPoint positionAtEnd(QSize size, const ScreenArea &screen)
{
    const Qt::Edge edge = barEdge(screen).value_or(Qt::TopEdge);
    const QRect free = screen.available;
    const QPoint end = edge == Qt::TopEdge    ? free.topRight()
                       : edge == Qt::LeftEdge ? free.bottomLeft()
                                              : free.bottomRight();
    const QRect room = roomAt(edge, free);
    return positionInRoom(size, end, edge, screen, room);
}

} // namespace

/// Only the nearest edge tells where a bar is that reserves no room. In a corner the bar counts as
/// horizontal, as most are.
std::optional<Qt::Edge> nearEdge(QPoint place, const QRect &screen)
{
    const int above = place.y() - screen.top();
    const int below = screen.bottom() - place.y();
    if (std::min(above, below) <= edgeStrip)
        return above <= below ? Qt::TopEdge : Qt::BottomEdge;
    if (place.x() - screen.left() <= edgeStrip)
        return Qt::LeftEdge;
    if (screen.right() - place.x() <= edgeStrip)
        return Qt::RightEdge;
    return std::nullopt;
}

std::optional<QPoint> itemAnchor(const ItemTraces &traces)
{
    const auto readings = readingsOf(traces);
    const auto isNearPointer = [&traces](QPoint place) {
        return isNear(*traces.pointer, place);
    };
    if (traces.pointer &&
        (traces.isClick || std::any_of(readings.begin(), readings.end(), isNearPointer)))
        return traces.pointer;
    for (const QPoint place : readings) {
        if (isOnEdge(place, traces.screens))
            return place;
    }
    if (traces.pointer && isOnEdge(*traces.pointer, traces.screens))
        return traces.pointer;
    const bool isStillThere = traces.last && isOnEdge(*traces.last, traces.screens);
    return isStillThere ? traces.last : std::nullopt;
}

QPoint popoverPosition(QSize size, std::optional<QPoint> anchor, const QList<ScreenArea> &screens)
{
    const ScreenArea *const screen = anchor ? screenOf(*anchor, screens) : nullptr;
    if (screen == nullptr)
        return positionAtEnd(size, screens.value(0));
    const QRect free = screen->available;
    const auto itsEdge = edgeOf(*anchor, *screen);
    const auto bar = itsEdge ? itsEdge : barEdge(*screen);
    const bool isInUpperHalf = anchor->y() <= screen->whole.center().y();
    const Qt::Edge edge = bar.value_or(isInUpperHalf ? Qt::TopEdge : Qt::BottomEdge);
    const bool isAtBar = bar && !itsEdge;
    const QRect room = roomAt(edge, isAtBar ? free : freeBeyond(*anchor, edge, free));
    const QPoint position = positionInRoom(size, *anchor, edge, *screen, room);
    // On a small screen, clear of the pointer matters more than the gap at the sides.
    return clearOfPointer(clearOfPointer(position, size, *anchor, edge, room), size, *anchor, edge,
                          free);
}

} // namespace tidewick
