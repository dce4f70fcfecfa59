#pragma once

#include <QByteArray>
#include <QList>
#include <QPoint>
#include <QString>

#include <cstdint>
#include <memory>

#include <xcb/xcb.h>

/// Another program on the tests' X server, and the user.
class OtherProgram
{
public:
    OtherProgram();

    xcb_window_t root() const { return m_screen->root; }

    /// The 32-bit values of a property; empty if it is not there.
    QList<uint32_t> property(xcb_window_t window, const char *name);
    /// The same, with the names of atoms.
    QList<QByteArray> atoms(xcb_window_t window, const char *name);
    void setProperty(const char *name, const QList<uint32_t> &values);
    void removeProperty(const char *name);

    /// Becomes the owner of the selection; with false, nobody is.
    void own(const char *selection, bool isOwned);
    QPoint placeOf(xcb_window_t window);
    void moveWindow(xcb_window_t window, QPoint place);
    /// With XCB_NONE no window has it.
    void giveKeyboard(xcb_window_t window);

    /// What programs have told of their starts since the last call.
    QList<QByteArray> startupTexts();

private:
    xcb_atom_t atom(const char *name);
    /// Returns when the server has done all.
    void sync();

    std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t *)> m_x;
    xcb_screen_t *m_screen;
    xcb_window_t m_window;
    QByteArray m_startupText;
};

/// Uses the mouse and the keyboard, as the words of xdotool(1) say.
void useInput(const QString &words);
