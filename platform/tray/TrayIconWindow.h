#pragma once

#include "platform/x11/X11Connection.h"

#include <QImage>
#include <QObject>
#include <QPoint>
#include <QRect>

#include <functional>

namespace tidewick
{

/// A window of this program in an X11 tray, by freedesktop.org's System Tray Protocol and XEmbed.
/// It is there until it is destroyed or the tray destroys it. The tray decides its size; the
/// picture is the largest square in its middle. Where the tray offers a visual with an alpha
/// channel, the picture's transparency is the window's; elsewhere the picture is drawn over the
/// tray's background.
class TrayIconWindow : public QObject
{
    Q_OBJECT

public:
    /// `tray` is the owner of the tray's selection. `picture` draws the icon, `side` pixels wide
    /// and high.
    TrayIconWindow(xcb_window_t tray, std::function<QImage(int side)> picture);

    /// Draws the picture anew.
    void update();

Q_SIGNALS:
    /// A button went down on the icon, whose middle is at `place`, in pixels of the whole desktop.
    void pressed(int button, QPoint place);
    void entered();
    void left();

private:
    void create(xcb_window_t tray);
    void dock(xcb_window_t tray);
    void handle(const xcb_generic_event_t &event);
    void press(const xcb_button_press_event_t &event);
    void draw();
    /// What is behind the picture. Null if the window cannot be seen.
    QImage background(const QRect &square);

    X11Connection m_x;
    const std::function<QImage(int side)> m_picture;
    xcb_window_t m_window = XCB_NONE;
    xcb_gcontext_t m_context = XCB_NONE;
    uint8_t m_depth = 0;
    QSize m_size;
};

} // namespace tidewick
