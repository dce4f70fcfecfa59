#include "platform/wayland/KeyboardWatch.h"

#include <QGuiApplication>

#include <utility>

#include <unistd.h>
#include <wayland-client.h>

namespace tidewick
{
namespace
{

void release(wl_keyboard *keyboard)
{
    // The request came with version 3.
    if (wl_keyboard_get_version(keyboard) >= WL_KEYBOARD_RELEASE_SINCE_VERSION)
        wl_keyboard_release(keyboard);
    else
        wl_keyboard_destroy(keyboard);
}

/// Another object for the toolkit's keyboard; null where there is none.
wl_keyboard *anotherKeyboard()
{
    const auto *wayland = qGuiApp->nativeInterface<QNativeInterface::QWaylandApplication>();
    // A seat that has no keyboard takes the question as an error.
    if (wayland == nullptr || wayland->keyboard() == nullptr)
        return nullptr;
    return wl_seat_get_keyboard(wayland->seat());
}

void closeKeymap(void * /*watch*/, wl_keyboard * /*keyboard*/, uint32_t /*format*/, int descriptor,
                 uint32_t /*size*/)
{
    close(descriptor);
}

} // namespace

KeyboardWatch::KeyboardWatch(std::function<void()> taken)
    : m_taken(std::move(taken)), m_keyboard(anotherKeyboard(), &release)
{
    static constexpr wl_keyboard_listener listener{
        closeKeymap,
        [](void * /*watch*/, wl_keyboard * /*keyboard*/, uint32_t /*serial*/,
           wl_surface * /*surface*/, wl_array * /*keys*/) {},
        leave,
        [](void * /*watch*/, wl_keyboard * /*keyboard*/, uint32_t /*serial*/, uint32_t /*time*/,
           uint32_t /*key*/, uint32_t /*state*/) {},
        [](void * /*watch*/, wl_keyboard * /*keyboard*/, uint32_t /*serial*/, uint32_t /*down*/,
           uint32_t /*latched*/, uint32_t /*locked*/, uint32_t /*group*/) {},
        [](void * /*watch*/, wl_keyboard * /*keyboard*/, int32_t /*rate*/, int32_t /*delay*/) {
        }};
    if (m_keyboard)
        wl_keyboard_add_listener(m_keyboard.get(), &listener, this);
}

void KeyboardWatch::leave(void *watch, wl_keyboard * /*keyboard*/, unsigned /*serial*/,
                          wl_surface * /*surface*/)
{
    static_cast<KeyboardWatch *>(watch)->m_taken();
}

} // namespace tidewick
