#include "platform/window/LayerPlacement.h"

#include <algorithm>

namespace tidewick
{
namespace
{

/// What a bar at `edge` leaves free if it reaches just beyond `anchor`.
QRect freeOfBar(Qt::Edge edge, std::optional<QPoint> anchor, QRect screen)
{
    switch (edge) {
    case Qt::TopEdge:
        screen.setTop(anchor ? anchor->y() + 1 : screen.top() + 1);
        break;
    case Qt::BottomEdge:
        screen.setBottom(anchor ? anchor->y() - 1 : screen.bottom() - 1);
        break;
    case Qt::LeftEdge:
        screen.setLeft(anchor ? anchor->x() + 1 : screen.left() + 1);
        break;
    case Qt::RightEdge:
        screen.setRight(anchor ? anchor->x() - 1 : screen.right() - 1);
        break;
    }
    return screen;
}

/// The distances of `inner` from the sides of `outer`.
QMargins distancesWithin(const QRect &outer, const QRect &inner)
{
    return {inner.left() - outer.left(), inner.top() - outer.top(), outer.right() - inner.right(),
            outer.bottom() - inner.bottom()};
}

} // namespace

LayerPlace layerPlace(QSize size, std::optional<QPoint> anchor, const QList<ScreenArea> &screens)
{
    const auto screen =
        std::find_if(screens.begin(), screens.end(), [&anchor](const ScreenArea &one) {
            return anchor && one.whole.contains(*anchor);
        });
    if (screen == screens.end())
        return {{}, Qt::TopEdge | Qt::RightEdge, {0, popoverGap, popoverGap, 0}};

    const QRect whole = screen->whole;
    const auto near = nearEdge(*anchor, whole);
    const bool isInUpperHalf = anchor->y() <= whole.center().y();
    const Qt::Edge edge = near.value_or(isInUpperHalf ? Qt::TopEdge : Qt::BottomEdge);
    const QRect free = freeOfBar(edge, near ? anchor : std::nullopt, whole);
    const QRect popover(popoverPosition(size, anchor, {{whole, free}}), size);
    const QMargins distances = distancesWithin(whole, popover);

    const bool isBarHorizontal = edge == Qt::TopEdge || edge == Qt::BottomEdge;
    const Qt::Edge nearerSide = distances.left() < distances.right() ? Qt::LeftEdge : Qt::RightEdge;
    const Qt::Edge nearerEnd = distances.top() < distances.bottom() ? Qt::TopEdge : Qt::BottomEdge;
    const Qt::Edge across = isBarHorizontal ? nearerSide : nearerEnd;
    const auto kept = [edge, across](Qt::Edge side, int distance) {
        return side == edge ? popoverGap : side == across ? distance : 0;
    };
    return {screen - screens.begin(),
            edge | across,
            {kept(Qt::LeftEdge, distances.left()), kept(Qt::TopEdge, distances.top()),
             kept(Qt::RightEdge, distances.right()), kept(Qt::BottomEdge, distances.bottom())}};
}

} // namespace tidewick
