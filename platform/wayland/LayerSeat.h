#pragma once

#include "platform/wayland/KeyboardWatch.h"
#include "platform/window/PopoverSeat.h"

#include <LayerShellQt/Window>
#include <QObject>
#include <QTimer>

#include <functional>

class QQuickWindow;

namespace tidewick
{

/// Has the compositor put the window at the sides of a screen, clear of the bars there, by the
/// protocol zwlr_layer_shell_v1. Such a window has no entry in task bars. It allows the compositor
/// to give it the keyboard, and a click elsewhere takes that away.
///
/// sway, up to 1.10 at least, takes the keyboard from such a window at once. So under sway the
/// window asks to have it alone. Then sway gives it to another window that is clicked, or that the
/// pointer reaches, and back at once; this closes the window, unless the pointer comes to it next.
/// Belongs to the window.
class LayerSeat : public QObject, public PopoverSeat
{
    Q_OBJECT

public:
    /// Calls `lost` where sway has taken the keyboard for good.
    LayerSeat(QQuickWindow &window, std::function<void()> lost);

    void place(std::optional<QPoint> anchor) override;
    void takeKeyboard() override;
    bool allowsFrame() const override { return false; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void watchKeyboard(bool isVisible);
    void closeWithoutPointer();

    QQuickWindow &m_window;
    std::function<void()> m_lost;
    LayerShellQt::Window *m_layer;
    std::optional<KeyboardWatch> m_keyboard; // while the window is shown, under sway
    QTimer m_closing;                        // runs after the keyboard was taken
    bool m_hasPointer = false;
};

} // namespace tidewick
