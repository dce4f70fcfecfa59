#include "platform/tray/TrayIconWindow.h"

#include "platform/x11/Xcb.h"

#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

namespace tidewick
{
namespace
{

constexpr int usualSide = 22;    // points
constexpr int largestSide = 256; // pixels

constexpr uint8_t alphaDepth = 32;

/// By it a bar knows the icon: the instance's name and the class, each with its end.
constexpr std::string_view className("tidewick\0tidewick\0", 18);

constexpr uint32_t wantedEvents = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                                  XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_ENTER_WINDOW |
                                  XCB_EVENT_MASK_LEAVE_WINDOW;

/// The visual that the tray wants icons to have, or else the screen's own.
xcb_visualid_t visualFor(const X11Connection &x, xcb_window_t tray)
{
    const auto cookie = xcb_get_property(x.get(), 0, tray, atom(x.get(), "_NET_SYSTEM_TRAY_VISUAL"),
                                         XCB_ATOM_VISUALID, 0, 1);
    const auto reply = owned(xcb_get_property_reply(x.get(), cookie, nullptr));
    if (!reply || xcb_get_property_value_length(reply.get()) != sizeof(xcb_visualid_t))
        return x.screen().root_visual;
    return *static_cast<const xcb_visualid_t *>(xcb_get_property_value(reply.get()));
}

/// The depth of a visual; 0 if the screen does not have it.
uint8_t depthOf(xcb_visualid_t wanted, const xcb_screen_t &screen)
{
    auto depth = xcb_screen_allowed_depths_iterator(&screen);
    for (; depth.rem > 0; xcb_depth_next(&depth)) {
        const xcb_visualtype_t *const visuals = xcb_depth_visuals(depth.data);
        const auto *const end = visuals + xcb_depth_visuals_length(depth.data);
        if (std::any_of(visuals, end, [wanted](const xcb_visualtype_t &visual) {
                return visual.visual_id == wanted;
            }))
            return depth.data->depth;
    }
    return 0;
}

/// How the server stores pixels of such a depth.
QImage::Format formatOf(uint8_t depth)
{
    switch (depth) {
    case 15:
        return QImage::Format_RGB555;
    case 16:
        return QImage::Format_RGB16;
    case 30:
        return QImage::Format_RGB30;
    case alphaDepth:
        return QImage::Format_ARGB32_Premultiplied;
    default:
        return QImage::Format_RGB32;
    }
}

/// A property of whole numbers.
template <std::size_t count>
void writeNumbers(const X11Connection &x, xcb_window_t window, xcb_atom_t name, xcb_atom_t type,
                  const std::array<uint32_t, count> &values)
{
    xcb_change_property(x.get(), XCB_PROP_MODE_REPLACE, window, name, type, 32, count,
                        values.data());
}

/// Some trays give an icon the size that it asks for.
void askForSize(const X11Connection &x, xcb_window_t window, uint32_t side)
{
    constexpr uint32_t hasMinimum = 1 << 4;
    std::array<uint32_t, 18> hints = {hasMinimum};
    hints[5] = hints[6] = side;
    writeNumbers(x, window, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, hints);
}

} // namespace

TrayIconWindow::TrayIconWindow(xcb_window_t tray, std::function<QImage(int side)> picture)
    : m_x([this](const xcb_generic_event_t &event) { handle(event); }),
      m_picture(std::move(picture))
{
    if (!m_x.isOpen())
        return;
    create(tray);
    dock(tray);
    xcb_flush(m_x.get());
}

void TrayIconWindow::create(xcb_window_t tray)
{
    const auto side = static_cast<uint16_t>(std::lround(usualSide * qGuiApp->devicePixelRatio()));
    xcb_visualid_t visual = visualFor(m_x, tray);
    m_depth = depthOf(visual, m_x.screen());
    if (m_depth == 0) {
        visual = m_x.screen().root_visual;
        m_depth = m_x.screen().root_depth;
    }
    const xcb_colormap_t colors = xcb_generate_id(m_x.get());
    xcb_create_colormap(m_x.get(), XCB_COLORMAP_ALLOC_NONE, colors, m_x.root(), visual);
    m_window = xcb_generate_id(m_x.get());
    m_size = QSize(side, side);
    constexpr uint32_t chosen =
        XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP;
    const std::array<uint32_t, 4> values = {0, 0, wantedEvents, colors};
    xcb_create_window(m_x.get(), m_depth, m_window, m_x.root(), 0, 0, side, side, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, visual, chosen, values.data());
    m_context = xcb_generate_id(m_x.get());
    xcb_create_gc(m_x.get(), m_context, m_window, 0, nullptr);

    askForSize(m_x, m_window, side);
    xcb_change_property(m_x.get(), XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_CLASS,
                        XCB_ATOM_STRING, 8, className.size(), className.data());
    constexpr uint32_t isMapped = 1 << 0;
    const xcb_atom_t info = atom(m_x.get(), "_XEMBED_INFO");
    writeNumbers(m_x, m_window, info, info, std::array<uint32_t, 2>{0, isMapped});
}

/// Asks the tray to take the window. It puts the window into one of its own and shows it.
void TrayIconWindow::dock(xcb_window_t tray)
{
    constexpr uint32_t requestDock = 0;
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = tray;
    message.type = atom(m_x.get(), "_NET_SYSTEM_TRAY_OPCODE");
    message.data.data32[0] = XCB_CURRENT_TIME;
    message.data.data32[1] = requestDock;
    message.data.data32[2] = m_window;
    xcb_send_event(m_x.get(), 0, tray, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char *>(&message));
}

void TrayIconWindow::update()
{
    draw();
    m_x.sync();
}

void TrayIconWindow::handle(const xcb_generic_event_t &event)
{
    switch (event.response_type & 0x7f) {
    case XCB_CONFIGURE_NOTIFY: {
        const auto &place = reinterpret_cast<const xcb_configure_notify_event_t &>(event);
        m_size = QSize(place.width, place.height);
        draw();
        break;
    }
    case XCB_EXPOSE:
        if (reinterpret_cast<const xcb_expose_event_t &>(event).count == 0)
            draw();
        break;
    case XCB_BUTTON_PRESS:
        press(reinterpret_cast<const xcb_button_press_event_t &>(event));
        break;
    case XCB_ENTER_NOTIFY:
        Q_EMIT entered();
        break;
    case XCB_LEAVE_NOTIFY:
        Q_EMIT left();
        break;
    case XCB_DESTROY_NOTIFY:
        m_window = XCB_NONE;
        break;
    default:
        break;
    }
}

void TrayIconWindow::press(const xcb_button_press_event_t &event)
{
    // Until the button is up the pointer would belong to this connection, and a menu needs it.
    xcb_ungrab_pointer(m_x.get(), XCB_CURRENT_TIME);
    xcb_flush(m_x.get());
    const QPoint corner(event.root_x - event.event_x, event.root_y - event.event_y);
    Q_EMIT pressed(event.detail, QRect(corner, m_size).center());
}

void TrayIconWindow::draw()
{
    const int side = std::min({m_size.width(), m_size.height(), largestSide});
    if (m_window == XCB_NONE || side <= 0)
        return;
    QRect square(0, 0, side, side);
    square.moveCenter(QRect(QPoint(), m_size).center());
    QImage canvas = background(square);
    if (canvas.isNull())
        return;
    QPainter(&canvas).drawImage(0, 0, m_picture(side));
    xcb_put_image(m_x.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, m_context,
                  static_cast<uint16_t>(side), static_cast<uint16_t>(side),
                  static_cast<int16_t>(square.x()), static_cast<int16_t>(square.y()), 0, m_depth,
                  static_cast<uint32_t>(canvas.sizeInBytes()), canvas.constBits());
    xcb_flush(m_x.get());
}

QImage TrayIconWindow::background(const QRect &square)
{
    QImage image(square.size(), formatOf(m_depth));
    image.fill(Qt::transparent);
    if (m_depth == alphaDepth)
        return image;
    const uint32_t parents = XCB_BACK_PIXMAP_PARENT_RELATIVE;
    xcb_change_window_attributes(m_x.get(), m_window, XCB_CW_BACK_PIXMAP, &parents);
    xcb_clear_area(m_x.get(), 0, m_window, 0, 0, 0, 0);
    const auto cookie = xcb_get_image(
        m_x.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_window, static_cast<int16_t>(square.x()),
        static_cast<int16_t>(square.y()), static_cast<uint16_t>(square.width()),
        static_cast<uint16_t>(square.height()), ~0U);
    const auto reply = owned(xcb_get_image_reply(m_x.get(), cookie, nullptr));
    if (!reply || xcb_get_image_data_length(reply.get()) != image.sizeInBytes())
        return {};
    std::copy_n(xcb_get_image_data(reply.get()), image.sizeInBytes(), image.bits());
    return image;
}

} // namespace tidewick
