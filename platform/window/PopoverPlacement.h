#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>

#include <optional>

namespace tidewick
{

/// Points between a popover and the bar or a side of the screen.
inline constexpr int popoverGap = 6;

/// A screen: all of it, and what the bars on it leave free, in points. Its pixels begin at the same
/// numbers as its points.
struct ScreenArea
{
    QRect whole;
    QRect available;
    qreal pixelsPerPoint = 1;
};

/// What is known about the place of the status item, in points of the whole desktop.
struct ItemTraces
{
    QList<ScreenArea> screens; // the primary one first
    /// The place of the pointer, if it can be known.
    std::optional<QPoint> pointer;
    /// A button was pressed just now, so the pointer is on the item for certain.
    bool isClick = false;
    /// What the tray reports of the click: the desktop's coordinates, the bar's, or (0, 0).
    std::optional<QPoint> told;
    /// The place where the item was found last.
    std::optional<QPoint> last;
    /// The tray counts pixels. If that makes no sense, it counts points, and the other way round.
    bool isToldInPixels = false;
};

/// A point on the status item; nothing if none of the facts can be believed. If the pointer is far
/// from the place that the tray reports, the keyboard chose the item.
std::optional<QPoint> itemAnchor(const ItemTraces &traces);

/// The edge of the screen whose bar may hold an item at `place`; nothing in the middle of the
/// screen.
std::optional<Qt::Edge> nearEdge(QPoint place, const QRect &screen);

/// The upper left corner of a popover of `size`. It is 6 points from the bar that holds the anchor,
/// at whichever edge, at least as far from the sides beside it, and within the free area of that
/// screen. If the anchor is in the middle of the screen, as in a popup of the bar, the popover is
/// at the bar and beside the anchor, so that the pointer is not on it. Without an anchor it is at
/// the end of the primary screen's bar.
QPoint popoverPosition(QSize size, std::optional<QPoint> anchor, const QList<ScreenArea> &screens);

} // namespace tidewick
