#pragma once

#include <QByteArray>

#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

namespace tidewick
{

/// What the X library hands over to be freed: replies and events. Null where none came.
template <class Reply>
using XcbReply = std::unique_ptr<Reply, decltype(&std::free)>;

template <class Reply>
XcbReply<Reply> owned(Reply *reply)
{
    return {reply, &std::free};
}

/// The atom called `name`, which the server makes where it has none yet.
xcb_atom_t atom(xcb_connection_t *connection, const QByteArray &name);

/// XCB_NONE where nobody owns it.
xcb_window_t selectionOwner(xcb_connection_t *connection, xcb_atom_t selection);

} // namespace tidewick
