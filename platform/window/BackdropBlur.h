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

/// The value of the X11 property _KDE_NET_WM_BLUR_BEHIND_REGION for a rectangle in points, which
/// may have round corners: x, y, width and height of each of its parts in device pixels.
std::vector<quint32> blurRegion(QRectF points, qreal pixelsPerPoint, qreal cornerRadius = 0);

/// Makes the window translucent. If the blur is offered, asks for it behind the whole window, which
/// has corners of this radius, whenever the window is shown or resized. Lives as long as the
/// window.
class BackdropBlur : public QObject
{
    Q_OBJECT

public:
    BackdropBlur(QQuickWindow &window, qreal cornerRadius);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWindow &m_window;
    qreal m_cornerRadius;
};

} // namespace tidewick
