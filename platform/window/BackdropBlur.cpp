#include "platform/window/BackdropBlur.h"

#include "platform/x11/Xcb.h"

#include <QEvent>
#include <QGuiApplication>
#include <QQuickWindow>

#include <cmath>

namespace tidewick
{
namespace
{

xcb_atom_t blurAtom(xcb_connection_t *x)
{
    return atom(x, QByteArrayLiteral("_KDE_NET_WM_BLUR_BEHIND_REGION"));
}

} // namespace

bool isScreenComposited()
{
    xcb_connection_t *x = toolkitConnection();
    if (x == nullptr)
        return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
    return selectionOwner(x, atom(x, QByteArrayLiteral("_NET_WM_CM_S0"))) != XCB_NONE;
}

bool isBlurOffered()
{
    xcb_connection_t *x = toolkitConnection();
    if (x == nullptr)
        return false;
    // The compositor says so with a property of that name on the root window.
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
    const auto cookie = xcb_get_property(x, 0, root, blurAtom(x), XCB_GET_PROPERTY_TYPE_ANY, 0, 0);
    const auto reply = owned(xcb_get_property_reply(x, cookie, nullptr));
    return reply && reply->type != XCB_NONE;
}

std::vector<quint32> blurRegion(QRectF points, qreal pixelsPerPoint, qreal cornerRadius)
{
    const auto pixels = [pixelsPerPoint](qreal value) {
        return static_cast<quint32>(std::lround(value * pixelsPerPoint));
    };
    const quint32 x = pixels(points.x());
    const quint32 y = pixels(points.y());
    const quint32 width = pixels(points.width());
    const quint32 height = pixels(points.height());
    const quint32 corner = pixels(cornerRadius);
    std::vector<quint32> region{x, y + corner, width, height - 2 * corner};
    // One row of pixels after another.
    for (quint32 row = 0; row < corner; ++row) {
        const double up = corner - row - 0.5;
        const double across = corner - std::sqrt(double(corner) * corner - up * up);
        const auto inset = static_cast<quint32>(std::lround(across));
        for (const quint32 top : {y + row, y + height - 1 - row})
            region.insert(region.end(), {x + inset, top, width - 2 * inset, 1});
    }
    return region;
}

BackdropBlur::BackdropBlur(QQuickWindow &window, qreal cornerRadius)
    : QObject(&window), m_window(window), m_cornerRadius(cornerRadius)
{
    window.setColor(Qt::transparent);
    window.installEventFilter(this);
}

bool BackdropBlur::eventFilter(QObject *watched, QEvent *event)
{
    const bool isPlaced = event->type() == QEvent::Expose || event->type() == QEvent::Resize;
    if (isPlaced && m_window.isExposed() && isBlurOffered()) {
        xcb_connection_t *x = toolkitConnection();
        const auto region =
            blurRegion(QRectF({}, QSizeF(m_window.size())), m_window.devicePixelRatio(),
                       m_window.flags().testFlag(Qt::FramelessWindowHint) ? m_cornerRadius : 0);
        xcb_change_property(x, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(m_window.winId()),
                            blurAtom(x), XCB_ATOM_CARDINAL, 32,
                            static_cast<uint32_t>(region.size()), region.data());
        xcb_flush(x);
    }
    return QObject::eventFilter(watched, event);
}

} // namespace tidewick
