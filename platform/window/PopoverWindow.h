#pragma once

#include "platform/Popover.h"
#include "platform/window/PointerButtons.h"
#include "platform/window/PopoverSeat.h"
#include "platform/window/ViewWindow.h"

#include <QElapsedTimer>
#include <QTimer>

#include <functional>
#include <memory>

namespace tidewick
{

/// A frameless window above the others, beside the status item. Escape closes it. A transient one
/// also closes on a press of any button outside this program's windows, and when another program
/// takes the keyboard. If no item is visible, it is an ordinary window with a frame where the
/// desktop allows that, and only the user closes it. Created once, then shown and hidden.
class PopoverWindow : public ViewWindow, public Popover
{
    Q_OBJECT

public:
    /// `hasItem` tells whether the user sees the status item; it is asked at each opening.
    explicit PopoverWindow(std::function<bool()> hasItem);
    ~PopoverWindow() override;
    Q_DISABLE_COPY_MOVE(PopoverWindow)

    void setContentSize(QSize points) override { fixSize(points); }
    void setContentView(const QUrl &view, const QVariantMap &properties) override
    {
        setView(view, properties);
    }
    void makeReady() override { m_readying.start(); }
    void setBehavior(PopoverBehavior behavior) override;
    bool isShown() const override { return isVisible(); }
    /// Does nothing if the same click has just closed the popover.
    void show(const std::optional<ClickEvent> &event) override;
    void performClose() override { hide(); }
    void becomeKey() override;

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void drawUnseen();
    void prepare(const std::optional<ClickEvent> &event);
    void watchScreen(const QScreen *screen);
    void closeOnPress();
    void watchFocus(const QWindow *focused);
    void closeWithoutFocus();
    void closeWithoutKeyboard();
    bool isTransient() const;
    bool isFrameless() const;
    bool hasJustClosed() const;

    std::function<bool()> m_hasItem;
    std::unique_ptr<PopoverSeat> m_seat;
    QTimer m_readying; // runs until the popover is made ready
    std::optional<PopoverBehavior> m_behavior;
    PointerButtons m_buttons;
    std::optional<QPoint> m_anchor; // where the item was seen last
    bool m_isPressOnItem = false;   // the last press closed the popover, maybe on the item
    QElapsedTimer m_sinceClosing;   // since that press
    QTimer m_focusTimeout;          // runs while the keyboard is elsewhere
    QPoint m_pointer;               // where it was when that began
    QElapsedTimer m_sinceLostFocus; // since the loss of the focus closed the popover
};

} // namespace tidewick
