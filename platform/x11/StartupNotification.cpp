#include "platform/x11/StartupNotification.h"

#include "platform/x11/Xcb.h"

#include <algorithm>

namespace tidewick
{
namespace
{

constexpr qsizetype pieceSize = 20;

void send(xcb_connection_t *x, xcb_window_t from, xcb_window_t root, const QByteArray &type,
          const QByteArray &piece)
{
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 8;
    message.window = from;
    message.type = atom(x, type);
    std::copy(piece.begin(), piece.end(), message.data.data8);
    xcb_send_event(x, 0, root, XCB_EVENT_MASK_PROPERTY_CHANGE,
                   reinterpret_cast<const char *>(&message));
}

} // namespace

QList<QByteArray> startupPieces(const QByteArray &text)
{
    const QByteArray whole = text + '\0';
    QList<QByteArray> pieces;
    for (qsizetype at = 0; at < whole.size(); at += pieceSize)
        pieces.append(whole.mid(at, pieceSize).leftJustified(pieceSize, '\0'));
    return pieces;
}

QByteArray endOfStartup(const QByteArray &id)
{
    QByteArray quoted;
    for (const char letter : id) {
        if (letter == '"' || letter == '\\')
            quoted += '\\';
        quoted += letter;
    }
    return "remove: ID=\"" + quoted + '"';
}

void endStartup(const QByteArray &id)
{
    xcb_connection_t *const x = toolkitConnection();
    if (x == nullptr || id.isEmpty())
        return;
    const xcb_screen_t *const screen = xcb_setup_roots_iterator(xcb_get_setup(x)).data;
    // The window only names the sender; the pieces of different senders may mingle.
    const xcb_window_t sender = xcb_generate_id(x);
    xcb_create_window(x, XCB_COPY_FROM_PARENT, sender, screen->root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    QByteArray type = QByteArrayLiteral("_NET_STARTUP_INFO_BEGIN");
    for (const QByteArray &piece : startupPieces(endOfStartup(id))) {
        send(x, sender, screen->root, type, piece);
        type = QByteArrayLiteral("_NET_STARTUP_INFO");
    }
    xcb_destroy_window(x, sender);
    xcb_flush(x);
}

} // namespace tidewick
