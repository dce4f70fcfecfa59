#pragma once

#include "platform/Appearance.h"

#include <QPalette>

namespace tidewick
{

/// `desktops` if it suits the scheme; else colours of our own that do, with its highlight. Qt knows
/// the palette of some desktops only, and is light on the others.
QPalette paletteFor(ColorScheme scheme, const QPalette &desktops);

/// Gives the program's windows such a palette, until the next call, whatever the desktop's palette
/// becomes. The panel is dark in any scheme.
void followColorScheme(ColorScheme scheme);

} // namespace tidewick
