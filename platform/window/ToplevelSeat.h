#pragma once

#include "platform/window/PopoverSeat.h"

#include <QDeadlineTimer>
#include <QObject>

class QMoveEvent;
class QWindow;

namespace tidewick
{

/// Moves the window itself, as X11 allows. Some window managers add a frame to a window while they
/// map it, and push it off its place; then it is moved back. Under Wayland the compositor chooses
/// the place. Belongs to the window.
class ToplevelSeat : public QObject, public PopoverSeat
{
    Q_OBJECT

public:
    explicit ToplevelSeat(QWindow &window);

    void place(std::optional<QPoint> anchor) override;
    void takeKeyboard() override;
    bool allowsFrame() const override { return true; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void correct(const QMoveEvent &event);

    QWindow &m_window;
    QPoint m_place;
    QDeadlineTimer m_mappingEnd; // until then the window manager may have moved the window
    int m_corrections = 0;       // of the place since the window was put there
};

} // namespace tidewick
