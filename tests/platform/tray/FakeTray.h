#pragma once

#include <QByteArray>
#include <QImage>
#include <QPoint>
#include <QRgb>

#include <cstdint>
#include <memory>

#include <xcb/xcb.h>

/// An X11 tray (freedesktop.org's System Tray Protocol) for one icon, until it is destroyed.
class FakeTray
{
public:
    enum class Visual { ofTheScreen, withAlpha, unknown };
    static constexpr int side = 30;
    static constexpr QPoint place{100, 200}; // of the icon on the screen

    /// A tray whose background has this colour.
    explicit FakeTray(Visual visual = Visual::ofTheScreen, QRgb background = 0xff204060);

    /// Tells all that `window` is a tray.
    void announce(xcb_window_t window);
    /// Whether it has an icon now; takes a new one.
    bool hasIcon();
    void resizeIcon(int width, int height);
    /// The icon's property of this name; empty if it has none.
    QByteArray property(const char *name);
    /// The width of the border that the server draws around the icon.
    int border();
    /// Draws over the icon and tells it that it has to draw itself anew.
    void uncover();
    /// The icon's own pixels, and nothing behind it.
    QImage picture();
    /// Tells the icon of a press on it, `offset` from its corner.
    void press(uint8_t button, QPoint offset);
    /// Tells the icon that the pointer came or went: XCB_ENTER_NOTIFY or XCB_LEAVE_NOTIFY.
    void movePointer(uint8_t event);

private:
    void take(xcb_window_t icon);

    std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t *)> m_x;
    xcb_screen_t *m_screen;
    xcb_window_t m_window; // which owns the selection and holds the icon
    xcb_window_t m_icon = XCB_NONE;
};
