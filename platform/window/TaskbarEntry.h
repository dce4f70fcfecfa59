#pragma once

class QWindow;

namespace tidewick
{

/// Leaves the window out of task bars, pagers and window switchers. To be called before each
/// showing, because the window manager forgets it when the window is hidden. Under Wayland a client
/// cannot ask for it.
void hideFromTaskbars(QWindow &window);

} // namespace tidewick
