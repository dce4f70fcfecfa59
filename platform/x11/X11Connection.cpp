#include "platform/x11/X11Connection.h"

#include "platform/x11/Xcb.h"

#include <QGuiApplication>
#include <QSocketNotifier>

#include <utility>

namespace tidewick
{
namespace
{

xcb_screen_t *screenNumber(xcb_connection_t *connection, int number)
{
    auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; number > 0 && screen.rem > 0; --number)
        xcb_screen_next(&screen);
    return screen.data;
}

} // namespace

X11Connection::X11Connection(Handler handler)
    : m_connection(nullptr, &xcb_disconnect), m_handler(std::move(handler))
{
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        return;
    m_connection.reset(xcb_connect(nullptr, &m_screenNumber));
    if (xcb_connection_has_error(m_connection.get()) != 0) {
        m_connection.reset();
        return;
    }
    m_screen = screenNumber(m_connection.get(), m_screenNumber);
    auto *notifier = new QSocketNotifier(xcb_get_file_descriptor(m_connection.get()),
                                         QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        handleEvents();
        notifier->setEnabled(xcb_connection_has_error(m_connection.get()) == 0);
    });
}

xcb_atom_t X11Connection::screenAtom(const QByteArray &name) const
{
    return atom(get(), name + "_S" + QByteArray::number(m_screenNumber));
}

void X11Connection::sync()
{
    if (!isOpen())
        return;
    // A reply comes after all events before it.
    const auto cookie = xcb_get_input_focus(m_connection.get());
    const auto reply = owned(xcb_get_input_focus_reply(m_connection.get(), cookie, nullptr));
    handleEvents();
}

void X11Connection::handleEvents()
{
    while (const auto event = owned(xcb_poll_for_event(m_connection.get())))
        m_handler(*event);
}

} // namespace tidewick
