#include "app/Environment.h"

#include <QByteArray>
#include <QLoggingCategory>

#include <csignal>

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

/// Newer toolkits warn if the desktop has no portal, if there is no session bus, and if a screen
/// reader calls what they do not know. None of it concerns the user: the program says what is
/// missing. QT_LOGGING_RULES brings the warnings back.
void silenceTheToolkit()
{
    QLoggingCategory::setFilterRules(QStringLiteral("qt.qpa.services.warning=false\n"
                                                    "qt.qpa.theme.dbus.warning=false\n"
                                                    "qt.qpa.theme.gnome.warning=false\n"
                                                    "qt.accessibility.atspi.warning=false"));
}

/// The tools would truncate their lines at the width of the terminal that started the program.
void forgetTheTerminal()
{
    qunsetenv("COLUMNS");
}

/// A line that nobody reads any more ends nothing. Unlike an ignored signal, a handler does not
/// pass on to the tools.
void surviveBrokenPipes()
{
    struct sigaction action = {};
    action.sa_handler = [](int) {
    };
    action.sa_flags = SA_RESTART;
    sigaction(SIGPIPE, &action, nullptr);
}

} // namespace

void prepareEnvironment()
{
    surviveBrokenPipes();
    forgetTheTerminal();
    preferX11();
    preferSoftwareRendering();
    silenceTheToolkit();
}

} // namespace tidewick
