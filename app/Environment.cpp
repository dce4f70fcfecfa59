#include "app/Environment.h"

#include <QByteArray>

namespace tidewick
{
namespace
{

/// Only X11 lets the program choose the panel's place, so XWayland comes before Wayland.
void preferX11()
{
    if (!qEnvironmentVariableIsEmpty("DISPLAY") &&
        !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") &&
        !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb;wayland");
}

/// The panel is drawn without OpenGL, which costs less memory and time here.
void preferSoftwareRendering()
{
    if (qEnvironmentVariableIsSet("QT_QUICK_BACKEND") ||
        qEnvironmentVariableIsSet("QSG_RHI_BACKEND"))
        return;
    qputenv("QT_QUICK_BACKEND", "software");
    if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION"))
        qputenv("QT_XCB_GL_INTEGRATION", "none");
}

} // namespace

void prepareEnvironment()
{
    preferX11();
    preferSoftwareRendering();
}

} // namespace tidewick
