#pragma once

#include "platform/window/PopoverSeat.h"

#include <QHash>
#include <QSize>
#include <QString>

#include <functional>
#include <memory>

class QQuickWindow;

namespace tidewick
{

/// Whether the session has a Wayland compositor that puts windows at the sides of a screen by the
/// protocol zwlr_layer_shell_v1, and this build can ask for it. Needs no application object. Takes
/// at most a second.
bool isLayerShellOffered();

/// The pixels of each screen by its name, if the toolkit's screens are on such a compositor: there
/// the toolkit itself knows whole scales only.
QHash<QString, QSize> layerScreenPixels();

/// A seat by that protocol for a window that the toolkit has not created yet; null without it.
/// Calls `lost` where the compositor has taken the keyboard and the toolkit does not notice.
std::unique_ptr<PopoverSeat> layerSeat(QQuickWindow &window, std::function<void()> lost);

} // namespace tidewick
