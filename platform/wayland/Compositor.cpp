#include "platform/wayland/Compositor.h"

#include <QDeadlineTimer>

#include <cerrno>
#include <cstdlib>
#include <list>
#include <memory>
#include <utility>

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
};

void compare(void *search, wl_registry * /*registry*/, uint32_t /*name*/, const char *interface,
             uint32_t /*version*/)
{
    auto &seen = *static_cast<Search *>(search);
    seen.isFound = seen.isFound || seen.interface == interface;
}

void forget(void * /*data*/, wl_registry * /*registry*/, uint32_t /*name*/) {}

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

/// Returns when the compositor has answered all requests; false if it does not.
bool finishRequests(wl_display *display, QDeadlineTimer deadline)
{
    static constexpr wl_callback_listener listener{
        [](void *isDone, wl_callback * /*callback*/, uint32_t /*data*/) {
            *static_cast<bool *>(isDone) = true;
        }};
    bool isDone = false;
    const std::unique_ptr<wl_callback, decltype(&wl_callback_destroy)> callback(
        wl_display_sync(display), &wl_callback_destroy);
    wl_callback_add_listener(callback.get(), &listener, &isDone);
    while (!isDone && handleNext(display, deadline)) {
    }
    return isDone;
}

using Connection = std::unique_ptr<wl_display, decltype(&wl_display_disconnect)>;

Connection connection()
{
    // It would take the connection that the parent process has prepared for the toolkit.
    const bool isTaken = std::getenv("WAYLAND_SOCKET") != nullptr;
    return {isTaken ? nullptr : wl_display_connect(nullptr), &wl_display_disconnect};
}

using Registry = std::unique_ptr<wl_registry, decltype(&wl_registry_destroy)>;

Registry registryOf(wl_display *display, const wl_registry_listener &listener, void *data)
{
    Registry registry(wl_display_get_registry(display), &wl_registry_destroy);
    wl_registry_add_listener(registry.get(), &listener, data);
    return registry;
}

struct Output
{
    std::unique_ptr<wl_output, decltype(&wl_output_destroy)> object;
    QString name;
    QSize size;
    bool isTurned = false; // by a quarter
};

void setTransform(void *output, wl_output * /*object*/, int32_t /*x*/, int32_t /*y*/,
                  int32_t /*width*/, int32_t /*height*/, int32_t /*subpixel*/,
                  const char * /*make*/, const char * /*model*/, int32_t transform)
{
    static_cast<Output *>(output)->isTurned = transform % 2 != 0;
}

void setMode(void *output, wl_output * /*object*/, uint32_t flags, int32_t width, int32_t height,
             int32_t /*refresh*/)
{
    if ((flags & WL_OUTPUT_MODE_CURRENT) != 0)
        static_cast<Output *>(output)->size = QSize(width, height);
}

constexpr wl_output_listener outputListener{
    setTransform,
    setMode,
    [](void * /*output*/, wl_output * /*object*/) {},
    [](void * /*output*/, wl_output * /*object*/, int32_t /*scale*/) {},
    [](void *output, wl_output * /*object*/, const char *name) {
        static_cast<Output *>(output)->name = QString::fromUtf8(name);
    },
    [](void * /*output*/, wl_output * /*object*/, const char * /*description*/) {
    }};

void addOutput(void *outputs, wl_registry *registry, uint32_t name, const char *interface,
               uint32_t version)
{
    if (std::string_view(interface) != wl_output_interface.name ||
        version < WL_OUTPUT_NAME_SINCE_VERSION)
        return;
    auto *const object = static_cast<wl_output *>(
        wl_registry_bind(registry, name, &wl_output_interface, WL_OUTPUT_NAME_SINCE_VERSION));
    auto &added = static_cast<std::list<Output> *>(outputs)->emplace_back(
        Output{{object, &wl_output_destroy}, {}, {}});
    wl_output_add_listener(object, &outputListener, &added);
}

} // namespace

bool compositorOffers(std::string_view interface, std::chrono::milliseconds timeout)
{
    static constexpr wl_registry_listener listener{compare, forget};
    const Connection display = connection();
    if (!display)
        return false;
    Search search{interface};
    const Registry registry = registryOf(display.get(), listener, &search);
    finishRequests(display.get(), QDeadlineTimer(timeout));
    return search.isFound;
}

QHash<QString, QSize> outputPixels(std::chrono::milliseconds timeout)
{
    static constexpr wl_registry_listener listener{addOutput, forget};
    const Connection display = connection();
    if (!display)
        return {};
    const QDeadlineTimer deadline(timeout);
    std::list<Output> outputs; // before the registry, whose listener refers to it
    const Registry registry = registryOf(display.get(), listener, &outputs);
    if (!finishRequests(display.get(), deadline) || !finishRequests(display.get(), deadline))
        return {};
    QHash<QString, QSize> sizes;
    for (const Output &output : outputs)
        sizes.insert(output.name, output.isTurned ? output.size.transposed() : output.size);
    return sizes;
}

} // namespace tidewick
