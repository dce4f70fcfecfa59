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

X11Tray::X11Tray()
    : m_x([this](const xcb_generic_event_t &event) {
          if ((event.response_type & 0x7f) != m_selectionNotify || m_selectionNotify == 0)
              return;
          const auto &change = reinterpret_cast<const xcb_xfixes_selection_notify_event_t &>(event);
          m_isPresent = change.owner != XCB_NONE;
          Q_EMIT presenceChanged();
      })
{
    if (!m_x.isOpen())
        return;
    const xcb_atom_t selection = m_x.screenAtom("_NET_SYSTEM_TRAY");
    m_selectionNotify = watchSelection(m_x.get(), m_x.root(), selection);
    m_isPresent = selectionOwner(m_x.get(), selection) != XCB_NONE;
}

} // namespace tidewick
