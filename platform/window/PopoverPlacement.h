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

/// What is known of where the status item stands, in points of the whole desktop.
struct ItemTraces
{
    QList<ScreenArea> screens; // the primary one first
    /// Where the pointer is, unless it cannot be known.
    std::optional<QPoint> pointer;
    /// A button was pressed just now, so the pointer is on the item for certain.
    bool isClick = false;
    /// What the tray told of the click: the desktop's coordinates, the bar's own, or (0, 0).
    std::optional<QPoint> told;
    /// Where the item was found the last time.
    std::optional<QPoint> last;
};

/// A point on the status item; nothing where no trace is to be believed. A pointer far from what
/// the tray told means that the keyboard chose the item.
std::optional<QPoint> itemAnchor(const ItemTraces &traces);

/// Where the upper left corner of a popover of `size` goes: 6 points from the bar that the anchor
/// stands on, whichever edge that is at, and within the free area of its screen; without an anchor
/// in the upper right corner of the primary screen.
QPoint popoverPosition(QSize size, std::optional<QPoint> anchor, const QList<ScreenArea> &screens);

} // namespace tidewick
