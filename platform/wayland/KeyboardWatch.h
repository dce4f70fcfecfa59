#pragma once

#include <functional>
#include <memory>

struct wl_keyboard;
struct wl_surface;

namespace tidewick
{

/// Notices when the compositor takes the keyboard from this program's windows, even if it gives it
/// back at once, which the toolkit does not report. Needs the toolkit's Wayland platform.
class KeyboardWatch
{
public:
    /// `taken` is called on the main thread until the watch ends.
    explicit KeyboardWatch(std::function<void()> taken);

private:
    static void leave(void *watch, wl_keyboard *keyboard, unsigned serial, wl_surface *surface);

    std::function<void()> m_taken;
    std::unique_ptr<wl_keyboard, void (*)(wl_keyboard *)> m_keyboard;
};

} // namespace tidewick
