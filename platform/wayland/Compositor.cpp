#include "platform/wayland/Compositor.h"

#include <QDeadlineTimer>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include <poll.h>
#include <wayland-client.h>

namespace tidewick
{
namespace
{

struct Search
{
    std::string_view interface;
    bool isFound = false;
    bool isComplete = false; // the compositor has told all that it offers
};

void compare(void *search, wl_registry * /*registry*/, uint32_t /*name*/, const char *interface,
             uint32_t /*version*/)
{
    auto &seen = *static_cast<Search *>(search);
    seen.isFound = seen.isFound || seen.interface == interface;
}

void complete(void *search, wl_callback * /*callback*/, uint32_t /*data*/)
{
    static_cast<Search *>(search)->isComplete = true;
}

constexpr wl_registry_listener registryListener{
    compare, [](void * /*search*/, wl_registry * /*registry*/, uint32_t /*name*/) {
    }};
constexpr wl_callback_listener callbackListener{complete};

/// Whether there is something to read before the deadline.
bool isReadable(int descriptor, QDeadlineTimer deadline)
{
    pollfd question{descriptor, POLLIN, 0};
    int ready = 0;
    do {
        ready = poll(&question, 1, static_cast<int>(deadline.remainingTime()));
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

/// Reads and handles what the compositor sends next; false if nothing comes or it hangs up.
bool handleNext(wl_display *display, QDeadlineTimer deadline)
{
    while (wl_display_prepare_read(display) != 0)
        wl_display_dispatch_pending(display);
    wl_display_flush(display);
    if (!isReadable(wl_display_get_fd(display), deadline)) {
        wl_display_cancel_read(display);
        return false;
    }
    return wl_display_read_events(display) == 0 && wl_display_dispatch_pending(display) >= 0;
}

} // namespace

bool compositorOffers(std::string_view interface, std::chrono::milliseconds timeout)
{
    // This would take the connection that the parent process has prepared for the toolkit.
    if (std::getenv("WAYLAND_SOCKET") != nullptr)
        return false;
    const std::unique_ptr<wl_display, decltype(&wl_display_disconnect)> display(
        wl_display_connect(nullptr), &wl_display_disconnect);
    if (!display)
        return false;
    Search search{interface};
    const std::unique_ptr<wl_registry, decltype(&wl_registry_destroy)> registry(
        wl_display_get_registry(display.get()), &wl_registry_destroy);
    wl_registry_add_listener(registry.get(), &registryListener, &search);
    const std::unique_ptr<wl_callback, decltype(&wl_callback_destroy)> callback(
        wl_display_sync(display.get()), &wl_callback_destroy);
    wl_callback_add_listener(callback.get(), &callbackListener, &search);
    const QDeadlineTimer deadline(timeout);
    while (!search.isComplete && handleNext(display.get(), deadline)) {
    }
    return search.isFound;
}

} // namespace tidewick
