#include "platform/window/PointerButtons.h"

#include "platform/x11/Xcb.h"

#include <algorithm>

#include <xcb/xinput.h>

namespace tidewick
{
namespace
{

/// The longest time from the release of a button to the tray's report of a click.
constexpr qint64 trayDelayMs = 1000;

/// Version 2.1 is the first to report raw events while another program has grabbed the pointer.
bool hasXInput(xcb_connection_t *connection)
{
    const auto cookie = xcb_input_xi_query_version(connection, 2, 2);
    const auto version = owned(xcb_input_xi_query_version_reply(connection, cookie, nullptr));
    return version && version->major_version == 2 && version->minor_version >= 1;
}

void selectRawButtons(xcb_connection_t *connection, xcb_window_t root)
{
    struct
    {
        xcb_input_event_mask_t head;
        uint32_t mask;
    } events = {{XCB_INPUT_DEVICE_ALL_MASTER, 1},
                XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS |
                    XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE};
    xcb_input_xi_select_events(connection, root, 1, &events.head);
    xcb_flush(connection);
}

bool isWheel(uint32_t button)
{
    return button >= 4 && button <= 7;
}

} // namespace

PointerButtons::PointerButtons() : m_x([this](const xcb_generic_event_t &event) { handle(event); })
{
    if (!m_x.isOpen() || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return;
    const auto *extension = xcb_get_extension_data(m_x.get(), &xcb_input_id);
    if (extension == nullptr || extension->present == 0 || !hasXInput(m_x.get()))
        return;
    m_opcode = extension->major_opcode;
    selectRawButtons(m_x.get(), m_x.root());
}

bool PointerButtons::isClicking() const
{
    return m_down > 0 || (m_sinceRelease.isValid() && !m_sinceRelease.hasExpired(trayDelayMs));
}

void PointerButtons::handle(const xcb_generic_event_t &event)
{
    if ((event.response_type & 0x7f) != XCB_GE_GENERIC)
        return;
    const auto &raw = reinterpret_cast<const xcb_input_raw_button_press_event_t &>(event);
    if (raw.extension != m_opcode || isWheel(raw.detail))
        return;
    if (raw.event_type == XCB_INPUT_RAW_BUTTON_PRESS) {
        ++m_down;
        Q_EMIT pressed();
    } else if (raw.event_type == XCB_INPUT_RAW_BUTTON_RELEASE) {
        m_down = std::max(0, m_down - 1);
        m_sinceRelease.start();
    }
}

} // namespace tidewick
