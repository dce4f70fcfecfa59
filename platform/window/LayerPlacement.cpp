#include "platform/window/LayerPlacement.h"

#include <algorithm>

namespace tidewick
{
namespace
{

/// What a bar of one point at `edge` leaves free.
QRect freeOfBar(Qt::Edge edge, const QRect &screen)
{
    switch (edge) {
    case Qt::TopEdge:
        return screen.adjusted(0, 1, 0, 0);
    case Qt::BottomEdge:
        return screen.adjusted(0, 0, 0, -1);
    case Qt::LeftEdge:
        return screen.adjusted(1, 0, 0, 0);
    case Qt::RightEdge:
        return screen.adjusted(0, 0, -1, 0);
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
    const bool isInUpperHalf = anchor->y() <= whole.center().y();
    const Qt::Edge likely = isInUpperHalf ? Qt::TopEdge : Qt::BottomEdge;
    const Qt::Edge edge = nearEdge(*anchor, whole).value_or(likely);
    // Only the place along the bar is taken from it.
    const ScreenArea area{whole, freeOfBar(edge, whole)};
    const QRect popover(popoverPosition(size, anchor, {area}), size);
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
