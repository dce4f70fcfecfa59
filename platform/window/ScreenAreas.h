#pragma once

#include "platform/window/PopoverPlacement.h"

#include <QList>

class QScreen;

namespace tidewick
{

/// The screens, the primary one first.
QList<QScreen *> screensInOrder();

/// Their areas, in the same order. Under Wayland nothing tells which part the bars leave free, and
/// the toolkit rounds the scale up.
QList<ScreenArea> screenAreas();

/// The same for a place that may be in pixels: with the real scales, or with none if GNOME Shell
/// counts points. Asks the Wayland compositor or the shell, which may take a second.
QList<ScreenArea> screenAreasWithScales();

} // namespace tidewick
