#pragma once

#include "platform/window/PopoverPlacement.h"

#include <QList>

class QScreen;

namespace tidewick
{

/// The screens, the primary one first.
QList<QScreen *> screensInOrder();

/// Their areas, in the same order. Under Wayland nothing tells which part the bars leave free.
QList<ScreenArea> screenAreas();

} // namespace tidewick
