#pragma once

#include <functional>

namespace tidewick
{

/// Which kind of colours the desktop wants windows to have.
enum class ColorScheme { any, dark, light };

/// How the desktop shows windows, as far as it concerns a window.
struct Surroundings
{
    bool isComposited = false; // translucent parts show what lies behind them, not black
    bool isBlurred = false;    // and a window can ask for it to be blurred
    bool reducesMotion = false;
    ColorScheme colorScheme = ColorScheme::any;

    bool operator==(const Surroundings &) const = default;
};

/// Watches the desktop's surroundings. Main thread only.
class Appearance
{
public:
    virtual ~Appearance() = default;

    /// Calls `observer` now and at each change. One observer at a time.
    virtual void observe(std::function<void(const Surroundings &)> observer) = 0;
};

} // namespace tidewick
