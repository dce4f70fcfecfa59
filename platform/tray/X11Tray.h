#pragma once

#include "platform/x11/X11Connection.h"

#include <QObject>

namespace tidewick
{

/// Watches for a tray of the old kind (freedesktop.org's System Tray Protocol), which owns the
/// selection _NET_SYSTEM_TRAY_Sn and takes icons as windows.
class X11Tray : public QObject
{
    Q_OBJECT

public:
    X11Tray();

    bool isPresent() const { return m_window != XCB_NONE; }
    /// The tray's own window, which icons are announced to; XCB_NONE without a tray.
    xcb_window_t window() const { return m_window; }

Q_SIGNALS:
    /// A tray came or went, or another took its place. The icons of the one before are lost.
    void changed();

private:
    void handle(const xcb_generic_event_t &event);
    void setWindow(xcb_window_t window);

    X11Connection m_x;
    xcb_atom_t m_selection = XCB_NONE;
    xcb_atom_t m_manager = XCB_NONE; // the type of the message of a new tray
    uint8_t m_selectionNotify = 0;   // the code of the events
    xcb_window_t m_window = XCB_NONE;
};

} // namespace tidewick
