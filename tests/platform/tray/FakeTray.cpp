#include "tests/platform/tray/FakeTray.h"

#include "platform/x11/Xcb.h"

#include <array>

using tidewick::atom;
using tidewick::owned;

namespace
{

constexpr uint8_t alphaDepth = 32;

xcb_visualid_t visualWithAlpha(const xcb_screen_t *screen)
{
    auto depth = xcb_screen_allowed_depths_iterator(screen);
    while (depth.data->depth != alphaDepth)
        xcb_depth_next(&depth);
    return xcb_depth_visuals(depth.data)->visual_id;
}

} // namespace

FakeTray::FakeTray(Visual visual, QRgb background)
    : m_x(xcb_connect(nullptr, nullptr), &xcb_disconnect),
      m_screen(xcb_setup_roots_iterator(xcb_get_setup(m_x.get())).data),
      m_window(xcb_generate_id(m_x.get()))
{
    xcb_connection_t *const x = m_x.get();
    const bool hasAlpha = visual == Visual::withAlpha;
    const xcb_visualid_t id = hasAlpha ? visualWithAlpha(m_screen) : m_screen->root_visual;
    const xcb_visualid_t wanted = visual == Visual::unknown ? XCB_NONE : id;
    const xcb_colormap_t colors = xcb_generate_id(x);
    xcb_create_colormap(x, XCB_COLORMAP_ALLOC_NONE, colors, m_screen->root, id);
    const std::array<uint32_t, 5> values = {background, 0, 1, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                                            colors};
    xcb_create_window(x, hasAlpha ? alphaDepth : m_screen->root_depth, m_window, m_screen->root,
                      place.x(), place.y(), 4 * side, 4 * side, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      id,
                      XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT |
                          XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
                      values.data());
    xcb_map_window(x, m_window);
    xcb_set_selection_owner(x, m_window, atom(x, "_NET_SYSTEM_TRAY_S0"), XCB_CURRENT_TIME);
    // As some trays do, after it became the owner.
    if (wanted != m_screen->root_visual)
        xcb_change_property(x, XCB_PROP_MODE_REPLACE, m_window, atom(x, "_NET_SYSTEM_TRAY_VISUAL"),
                            XCB_ATOM_VISUALID, 32, 1, &wanted);
    announce(m_window);
}

void FakeTray::announce(xcb_window_t window)
{
    xcb_client_message_event_t message = {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = m_screen->root;
    message.type = atom(m_x.get(), "MANAGER");
    message.data.data32[1] = atom(m_x.get(), "_NET_SYSTEM_TRAY_S0");
    message.data.data32[2] = window;
    xcb_send_event(m_x.get(), 0, m_screen->root, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&message));
    xcb_flush(m_x.get());
}

bool FakeTray::hasIcon()
{
    const xcb_atom_t opcode = atom(m_x.get(), "_NET_SYSTEM_TRAY_OPCODE");
    while (const auto event = owned(xcb_poll_for_event(m_x.get()))) {
        const uint8_t type = event->response_type & 0x7f;
        if (type == XCB_CLIENT_MESSAGE) {
            const auto &message = reinterpret_cast<const xcb_client_message_event_t &>(*event);
            if (message.type == opcode && message.data.data32[1] == 0)
                take(message.data.data32[2]);
        } else if (type == XCB_DESTROY_NOTIFY) {
            const auto &end = reinterpret_cast<const xcb_destroy_notify_event_t &>(*event);
            if (end.window == m_icon)
                m_icon = XCB_NONE;
        }
    }
    return m_icon != XCB_NONE;
}

void FakeTray::take(xcb_window_t icon)
{
    m_icon = icon;
    xcb_reparent_window(m_x.get(), icon, m_window, 0, 0);
    resizeIcon(side, side);
    xcb_map_window(m_x.get(), icon);
    // The server tells us of the end of windows in ours only, so the icon must be there before it
    // can end.
    owned(xcb_get_input_focus_reply(m_x.get(), xcb_get_input_focus(m_x.get()), nullptr));
}

void FakeTray::resizeIcon(int width, int height)
{
    const std::array<uint32_t, 2> size = {static_cast<uint32_t>(width),
                                          static_cast<uint32_t>(height)};
    xcb_configure_window(m_x.get(), m_icon, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         size.data());
    xcb_flush(m_x.get());
}

QByteArray FakeTray::property(const char *name)
{
    const auto cookie = xcb_get_property(m_x.get(), 0, m_icon, atom(m_x.get(), name),
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, 64);
    const auto reply = owned(xcb_get_property_reply(m_x.get(), cookie, nullptr));
    if (!reply)
        return {};
    return {static_cast<const char *>(xcb_get_property_value(reply.get())),
            xcb_get_property_value_length(reply.get())};
}

int FakeTray::border()
{
    const auto geometry =
        owned(xcb_get_geometry_reply(m_x.get(), xcb_get_geometry(m_x.get(), m_icon), nullptr));
    return geometry ? geometry->border_width : -1;
}

void FakeTray::uncover()
{
    const xcb_gcontext_t context = xcb_generate_id(m_x.get());
    xcb_create_gc(m_x.get(), context, m_icon, 0, nullptr);
    const xcb_rectangle_t all = {0, 0, side, side};
    xcb_poly_fill_rectangle(m_x.get(), m_icon, context, 1, &all);
    xcb_free_gc(m_x.get(), context);
    xcb_clear_area(m_x.get(), 1, m_icon, 0, 0, 0, 0);
    xcb_flush(m_x.get());
}

QImage FakeTray::picture()
{
    const auto size =
        owned(xcb_get_geometry_reply(m_x.get(), xcb_get_geometry(m_x.get(), m_icon), nullptr));
    if (!size)
        return {};
    const auto cookie = xcb_get_image(m_x.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_icon, 0, 0,
                                      size->width, size->height, ~0U);
    const auto image = owned(xcb_get_image_reply(m_x.get(), cookie, nullptr));
    if (!image)
        return {};
    const auto format =
        image->depth == alphaDepth ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32;
    return QImage(xcb_get_image_data(image.get()), size->width, size->height, format).copy();
}

void FakeTray::press(uint8_t button, QPoint offset)
{
    xcb_button_press_event_t event = {};
    event.response_type = XCB_BUTTON_PRESS;
    event.detail = button;
    event.root = m_screen->root;
    event.event = m_icon;
    event.same_screen = 1;
    event.event_x = static_cast<int16_t>(offset.x());
    event.event_y = static_cast<int16_t>(offset.y());
    event.root_x = static_cast<int16_t>(place.x() + offset.x());
    event.root_y = static_cast<int16_t>(place.y() + offset.y());
    xcb_send_event(m_x.get(), 0, m_icon, XCB_EVENT_MASK_BUTTON_PRESS,
                   reinterpret_cast<const char *>(&event));
    xcb_flush(m_x.get());
}

void FakeTray::movePointer(uint8_t event)
{
    xcb_enter_notify_event_t crossing = {};
    crossing.response_type = event;
    crossing.root = m_screen->root;
    crossing.event = m_icon;
    xcb_send_event(m_x.get(), 0, m_icon,
                   event == XCB_ENTER_NOTIFY ? XCB_EVENT_MASK_ENTER_WINDOW
                                             : XCB_EVENT_MASK_LEAVE_WINDOW,
                   reinterpret_cast<const char *>(&crossing));
    xcb_flush(m_x.get());
}
