#include "platform/tray/X11Tray.h"

#include "platform/x11/Xcb.h"

#include <xcb/xfixes.h>

namespace tidewick
{
namespace
{

/// The event code of XFixes' messages about selections; 0 without the extension.
uint8_t watchSelection(xcb_connection_t *connection, xcb_window_t root, xcb_atom_t selection)
{
    const auto *extension = xcb_get_extension_data(connection, &xcb_xfixes_id);
    if (extension == nullptr || extension->present == 0)
        return 0;
    // The extension accepts no other request before this one.
    const auto cookie = xcb_xfixes_query_version(connection, 1, 0);
    owned(xcb_xfixes_query_version_reply(connection, cookie, nullptr));
    xcb_xfixes_select_selection_input(connection, root, selection,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    xcb_flush(connection);
    return extension->first_event + XCB_XFIXES_SELECTION_NOTIFY;
}

} // namespace

X11Tray::X11Tray() : m_x([this](const xcb_generic_event_t &event) { handle(event); })
{
    if (!m_x.isOpen())
        return;
    m_selection = m_x.screenAtom("_NET_SYSTEM_TRAY");
    m_manager = atom(m_x.get(), "MANAGER");
    m_selectionNotify = watchSelection(m_x.get(), m_x.root(), m_selection);
    const uint32_t messages = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_x.get(), m_x.root(), XCB_CW_EVENT_MASK, &messages);
    m_window = selectionOwner(m_x.get(), m_selection);
    m_x.sync(); // what came before the answer
}

/// A tray is ready when it says so, which is after it became the owner.
void X11Tray::handle(const xcb_generic_event_t &event)
{
    const uint8_t type = event.response_type & 0x7f;
    if (type == XCB_CLIENT_MESSAGE) {
        const auto &message = reinterpret_cast<const xcb_client_message_event_t &>(event);
        if (message.type == m_manager && message.data.data32[1] == m_selection)
            setWindow(selectionOwner(m_x.get(), m_selection)); // anybody may send the message
    } else if (type == m_selectionNotify && m_selectionNotify != 0) {
        const auto &change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t &>(event);
        if (change.owner != m_window)
            setWindow(XCB_NONE);
    }
}

void X11Tray::setWindow(xcb_window_t window)
{
    m_window = window;
    Q_EMIT changed();
}

} // namespace tidewick
