#include "tests/platform/x11/OtherProgram.h"

#include "platform/x11/Xcb.h"

#include <gtest/gtest.h>

#include <QProcess>

#include <algorithm>
#include <array>
#include <utility>

using tidewick::owned;

OtherProgram::OtherProgram()
    : m_x(xcb_connect(nullptr, nullptr), &xcb_disconnect),
      m_screen(xcb_setup_roots_iterator(xcb_get_setup(m_x.get())).data),
      m_window(xcb_generate_id(m_x.get()))
{
    xcb_create_window(m_x.get(), XCB_COPY_FROM_PARENT, m_window, root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE; // the desktop's for startup messages
    xcb_change_window_attributes(m_x.get(), root(), XCB_CW_EVENT_MASK, &events);
    sync();
}

xcb_atom_t OtherProgram::atom(const char *name)
{
    return tidewick::atom(m_x.get(), name);
}

void OtherProgram::sync()
{
    owned(xcb_get_input_focus_reply(m_x.get(), xcb_get_input_focus(m_x.get()), nullptr));
}

QList<uint32_t> OtherProgram::property(xcb_window_t window, const char *name)
{
    const auto cookie =
        xcb_get_property(m_x.get(), 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, 1000);
    const auto reply = owned(xcb_get_property_reply(m_x.get(), cookie, nullptr));
    if (!reply || reply->format != 32)
        return {};
    const auto *const values = static_cast<const uint32_t *>(xcb_get_property_value(reply.get()));
    return {values, values + xcb_get_property_value_length(reply.get()) / 4};
}

QList<QByteArray> OtherProgram::atoms(xcb_window_t window, const char *name)
{
    QList<QByteArray> names;
    for (const xcb_atom_t value : property(window, name)) {
        const auto reply =
            owned(xcb_get_atom_name_reply(m_x.get(), xcb_get_atom_name(m_x.get(), value), nullptr));
        if (reply)
            names.append(
                {xcb_get_atom_name_name(reply.get()), xcb_get_atom_name_name_length(reply.get())});
    }
    return names;
}

void OtherProgram::setProperty(const char *name, const QList<uint32_t> &values)
{
    xcb_change_property(m_x.get(), XCB_PROP_MODE_REPLACE, root(), atom(name), XCB_ATOM_CARDINAL, 32,
                        static_cast<uint32_t>(values.size()), values.data());
    sync();
}

void OtherProgram::removeProperty(const char *name)
{
    xcb_delete_property(m_x.get(), root(), atom(name));
    sync();
}

void OtherProgram::own(const char *selection, bool isOwned)
{
    xcb_set_selection_owner(m_x.get(), isOwned ? m_window : XCB_NONE, atom(selection),
                            XCB_CURRENT_TIME);
    sync();
}

QPoint OtherProgram::placeOf(xcb_window_t window)
{
    const auto cookie = xcb_translate_coordinates(m_x.get(), window, root(), 0, 0);
    const auto reply = owned(xcb_translate_coordinates_reply(m_x.get(), cookie, nullptr));
    return reply ? QPoint(reply->dst_x, reply->dst_y) : QPoint();
}

void OtherProgram::moveWindow(xcb_window_t window, QPoint place)
{
    const std::array<int32_t, 2> values = {place.x(), place.y()};
    xcb_configure_window(m_x.get(), window, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y,
                         values.data());
    sync();
}

void OtherProgram::giveKeyboard(xcb_window_t window)
{
    xcb_set_input_focus(m_x.get(), XCB_INPUT_FOCUS_NONE, window, XCB_CURRENT_TIME);
    sync();
}

QList<QByteArray> OtherProgram::startupTexts()
{
    sync();
    const xcb_atom_t begin = atom("_NET_STARTUP_INFO_BEGIN");
    const xcb_atom_t more = atom("_NET_STARTUP_INFO");
    QList<QByteArray> texts;
    while (const auto event = owned(xcb_poll_for_event(m_x.get()))) {
        const auto &message = reinterpret_cast<const xcb_client_message_event_t &>(*event);
        if ((event->response_type & 0x7f) != XCB_CLIENT_MESSAGE ||
            (message.type != begin && message.type != more) || message.format != 8)
            continue;
        if (message.type == begin)
            m_startupText.clear();
        const auto *const bytes = reinterpret_cast<const char *>(message.data.data8);
        const auto *const end = std::find(bytes, bytes + sizeof message.data.data8, '\0');
        m_startupText.append(bytes, end - bytes);
        if (end != bytes + sizeof message.data.data8)
            texts.append(std::exchange(m_startupText, {}));
    }
    return texts;
}

void useInput(const QString &words)
{
    ASSERT_EQ(QProcess::execute(QStringLiteral("xdotool"), words.split(QLatin1Char(' '))), 0);
}
