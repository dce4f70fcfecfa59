#pragma once

#include <functional>

namespace tidewick
{

/// How the desktop shows windows, as far as a window has to know.
struct Surroundings
{
    bool isComposited = false; // what is translucent shows what lies behind; else it is black
    bool isBlurred = false;    // and that is blurred where a window asks for it
    bool reducesMotion = false;

    bool operator==(const Surroundings &) const = default;
};

/// Knows the desktop's surroundings. Main thread only.
class Appearance
{
public:
    virtual ~Appearance() = default;

    /// Calls `observer` now and at each change. One observer at a time.
    virtual void observe(std::function<void(const Surroundings &)> observer) = 0;
};

} // namespace tidewick
