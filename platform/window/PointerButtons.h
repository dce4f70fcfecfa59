#pragma once

#include "platform/x11/X11Connection.h"

#include <QElapsedTimer>
#include <QObject>

namespace tidewick
{

/// Hears the buttons of the pointer wherever they are pressed, as raw events of XInput 2 on the
/// root window, which grab nothing and take nothing from anybody. The wheel is no button here.
class PointerButtons : public QObject
{
    Q_OBJECT

public:
    PointerButtons();

    /// False under Wayland, XWayland included, where presses on other programs cannot be heard.
    bool canHear() const { return m_opcode != 0; }
    /// Whether a button is down, or was let go less than a second ago.
    bool isClicking() const;
    /// Tells at once of every press that has happened.
    void sync() { m_x.sync(); }

Q_SIGNALS:
    void pressed();

private:
    void handle(const xcb_generic_event_t &event);

    X11Connection m_x;
    uint8_t m_opcode = 0; // XInput's
    int m_down = 0;
    QElapsedTimer m_sinceRelease;
};

} // namespace tidewick
