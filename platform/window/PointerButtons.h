#pragma once

#include "platform/x11/X11Connection.h"

#include <QElapsedTimer>
#include <QObject>

namespace tidewick
{

/// Reports presses of the pointer's buttons anywhere on the screen. It receives raw events of
/// XInput 2 on the root window, which grabs nothing and withholds no event from other programs. The
/// wheel does not count as a button.
class PointerButtons : public QObject
{
    Q_OBJECT

public:
    PointerButtons();

    /// False under Wayland and XWayland, which do not report presses on other programs.
    bool canHear() const { return m_opcode != 0; }
    /// Whether a button is down or was released less than a second ago.
    bool isClicking() const;
    /// Reports every press until now before it returns.
    void sync() { m_x.sync(); }

Q_SIGNALS:
    void pressed();

private:
    void handle(const xcb_generic_event_t &event);

    X11Connection m_x;
    uint8_t m_opcode = 0; // of XInput
    int m_down = 0;
    QElapsedTimer m_sinceRelease;
};

} // namespace tidewick
