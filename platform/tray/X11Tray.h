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

    bool isPresent() const { return m_isPresent; }

Q_SIGNALS:
    void presenceChanged();

private:
    X11Connection m_x;
    uint8_t m_selectionNotify = 0; // the code of the events
    bool m_isPresent = false;
};

} // namespace tidewick
