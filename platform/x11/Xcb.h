#pragma once

#include <QByteArray>

#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

namespace tidewick
{

/// A reply or an event, which the caller of the X library must free. Null if none came.
template <class Reply>
using XcbReply = std::unique_ptr<Reply, decltype(&std::free)>;

template <class Reply>
XcbReply<Reply> owned(Reply *reply)
{
    return {reply, &std::free};
}

/// The toolkit's own connection; null if the windows are not on an X server.
xcb_connection_t *toolkitConnection();

/// The atom called `name`; the server creates it if necessary.
xcb_atom_t atom(xcb_connection_t *connection, const QByteArray &name);

/// XCB_NONE where nobody owns it.
xcb_window_t selectionOwner(xcb_connection_t *connection, xcb_atom_t selection);

} // namespace tidewick
