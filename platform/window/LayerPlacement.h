#pragma once

#include "platform/window/PopoverPlacement.h"

#include <QMargins>

namespace tidewick
{

/// The place of a window that the compositor puts at two sides of a screen: one side lengthwise,
/// one across. Its distance from them is counted from what the bars there leave free.
struct LayerPlace
{
    /// The index of the screen; nothing if the compositor shall take the one in use.
    std::optional<qsizetype> screen;
    Qt::Edges sides;
    QMargins distances;

    friend bool operator==(const LayerPlace &, const LayerPlace &) = default;
};

/// Where a popover of `size` is beside an item at `anchor`, if only the compositor knows how much
/// room the bars take. It is at the edge of the bar that holds the anchor, and across from there
/// bound to the nearer side, so that a bar at that side cannot push it off the screen. If the
/// anchor is in the middle of the screen, as in a popup of the bar, the pointer is not on the
/// popover. Without an anchor the popover is in the upper right corner.
LayerPlace layerPlace(QSize size, std::optional<QPoint> anchor, const QList<ScreenArea> &screens);

} // namespace tidewick
