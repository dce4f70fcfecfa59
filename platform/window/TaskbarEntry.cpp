#include "platform/window/TaskbarEntry.h"

#include "platform/x11/Xcb.h"

#include <QWindow>

#include <array>

namespace tidewick
{

void hideFromTaskbars(QWindow &window)
{
    xcb_connection_t *const x = toolkitConnection();
    if (x == nullptr)
        return;
    // The toolkit adds its own states to those that it finds when it shows the window.
    const std::array<xcb_atom_t, 2> states{atom(x, QByteArrayLiteral("_NET_WM_STATE_SKIP_TASKBAR")),
                                           atom(x, QByteArrayLiteral("_NET_WM_STATE_SKIP_PAGER"))};
    xcb_change_property(x, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
                        atom(x, QByteArrayLiteral("_NET_WM_STATE")), XCB_ATOM_ATOM, 32,
                        states.size(), states.data());
}

} // namespace tidewick
