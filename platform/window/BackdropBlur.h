#pragma once

#include <QObject>
#include <QRect>

#include <vector>

class QQuickWindow;
class QWindow;

namespace tidewick
{

/// Whether something composes the screen, so that translucent parts of a window show what is
/// behind them.
bool isScreenComposited();

/// Whether the compositor blurs what is behind the windows that ask for it.
bool isBlurOffered();

/// The value of the X11 property _KDE_NET_WM_BLUR_BEHIND_REGION for one rectangle in points: x, y,
/// width and height in device pixels.
std::vector<quint32> blurRegion(QRectF points, qreal pixelsPerPoint);

/// Makes the window translucent. If the blur is offered, asks for it behind the whole window
/// whenever the window is shown or resized. Lives as long as the window.
class BackdropBlur : public QObject
{
    Q_OBJECT

public:
    explicit BackdropBlur(QQuickWindow &window);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWindow &m_window;
};

} // namespace tidewick
