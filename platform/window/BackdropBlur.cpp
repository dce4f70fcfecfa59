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

std::vector<quint32> blurRegion(QRectF points, qreal pixelsPerPoint)
{
    const auto pixels = [pixelsPerPoint](qreal value) {
        return static_cast<quint32>(std::lround(value * pixelsPerPoint));
    };
    return {pixels(points.x()), pixels(points.y()), pixels(points.width()),
            pixels(points.height())};
}

BackdropBlur::BackdropBlur(QQuickWindow &window) : QObject(&window), m_window(window)
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
            blurRegion(QRectF({}, QSizeF(m_window.size())), m_window.devicePixelRatio());
        xcb_change_property(x, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(m_window.winId()),
                            blurAtom(x), XCB_ATOM_CARDINAL, 32,
                            static_cast<uint32_t>(region.size()), region.data());
        xcb_flush(x);
    }
    return QObject::eventFilter(watched, event);
}

} // namespace tidewick
