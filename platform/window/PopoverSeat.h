#pragma once

#include <QPoint>

#include <optional>

namespace tidewick
{

/// Puts the popover's window beside the status item, in the way that the desktop offers. Made with
/// the window, before it is shown for the first time. Main thread only.
class PopoverSeat
{
public:
    virtual ~PopoverSeat() = default;

    /// Puts the window beside an item at `anchor`, or where items usually are. Called before each
    /// showing, and again when a screen has changed meanwhile.
    virtual void place(std::optional<QPoint> anchor) = 0;
    /// Gives the keyboard to the window, which is shown.
    virtual void takeKeyboard() = 0;
    /// Whether the window can also be one with a frame.
    virtual bool allowsFrame() const = 0;
};

} // namespace tidewick
