#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>

#include <optional>

namespace tidewick
{

/// A screen: all of it, and what the bars on it leave free.
struct ScreenArea
{
    QRect whole;
    QRect available;
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
};

/// A point on the status item; nothing if none of the facts can be believed. If the pointer is far
/// from the place that the tray reports, the keyboard chose the item.
std::optional<QPoint> itemAnchor(const ItemTraces &traces);

/// The upper left corner of a popover of `size`. It is 6 points from the bar that holds the anchor,
/// at whichever edge, and within the free area of that screen. Without an anchor it is in the upper
/// right corner of the primary screen.
QPoint popoverPosition(QSize size, std::optional<QPoint> anchor, const QList<ScreenArea> &screens);

} // namespace tidewick
