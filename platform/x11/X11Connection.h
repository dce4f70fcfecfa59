#pragma once

#include <QByteArray>
#include <QObject>

#include <functional>
#include <memory>

#include <xcb/xcb.h>

namespace tidewick
{

/// A connection to the X server beside the toolkit's, for events that the toolkit does not report.
/// Without an X server there are no events.
class X11Connection : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<void(const xcb_generic_event_t &)>;

    /// `handler` is called for each event, on the main thread. The other functions need a
    /// connection that is open, except `sync`.
    explicit X11Connection(Handler handler);

    bool isOpen() const { return m_connection != nullptr; }
    xcb_connection_t *get() const { return m_connection.get(); }
    const xcb_screen_t &screen() const { return *m_screen; }
    xcb_window_t root() const { return m_screen->root; }
    /// `name` followed by `_Sn`, where n is the number of the screen.
    xcb_atom_t screenAtom(const QByteArray &name) const;

    /// Handles every event that the server has sent so far.
    void sync();

private:
    void handleEvents();

    std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t *)> m_connection;
    Handler m_handler;
    const xcb_screen_t *m_screen = nullptr;
    int m_screenNumber = 0;
};

} // namespace tidewick
