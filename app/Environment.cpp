#include "app/Environment.h"

#include "platform/wayland/LayerShell.h"

#include <QLoggingCategory>

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace tidewick
{
namespace
{

void choosePlatform()
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return;
    const bool hasWayland = !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    const QByteArray platforms = platformsFor(
        {!qEnvironmentVariableIsEmpty("DISPLAY"), hasWayland, hasWayland && isLayerShellOffered()});
    if (!platforms.isEmpty())
        qputenv("QT_QPA_PLATFORM", platforms);
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

/// Newer toolkits also say the first of a panel that was closed on a screen of fractional scale.
/// The others are said under Plasma 6, whose plugin tries OpenGL first. The lines have no category
/// by which to silence them.
constexpr std::array uselessLines{
    QLatin1String("The cached device pixel ratio value was stale"),
    QLatin1String("QXcbIntegration: Cannot create platform OpenGL context"),
    QLatin1String("Warning: fallback to QtQuick software backend"),
};

QtMessageHandler handlerOfTheToolkit = nullptr;

void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const bool isUseless =
        std::any_of(uselessLines.begin(), uselessLines.end(),
                    [&text](QLatin1String beginning) { return text.startsWith(beginning); });
    if (!isUseless)
        handlerOfTheToolkit(type, context, text);
}

/// Newer toolkits warn if the desktop has no portal, if there is no session bus, and if a screen
/// reader calls what they do not know. None of it concerns the user: the program says what is
/// missing. QT_LOGGING_RULES brings the warnings with a category back.
void silenceTheToolkit()
{
    QLoggingCategory::setFilterRules(QStringLiteral("qt.qpa.services.warning=false\n"
                                                    "qt.qpa.theme.dbus.warning=false\n"
                                                    "qt.qpa.theme.gnome.warning=false\n"
                                                    "qt.accessibility.atspi.warning=false"));
    if (handlerOfTheToolkit == nullptr)
        handlerOfTheToolkit = qInstallMessageHandler(handleMessage);
}

/// The tools would truncate their lines at the width of the terminal that started the program.
void forgetTheTerminal()
{
    qunsetenv("COLUMNS");
}

/// If the program was started without standard descriptors, the next files and sockets would take
/// their numbers, and receive what is printed.
void openStandardDescriptors()
{
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = open("/dev/null", O_RDWR);
    close(descriptor);
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

QByteArray platformsFor(const DisplayServers &servers)
{
    if (servers.hasLayerShell)
        return servers.hasX11 ? "wayland;xcb" : "wayland";
    return servers.hasX11 && servers.hasWayland ? "xcb;wayland" : "";
}

void prepareEnvironment()
{
    openStandardDescriptors();
    surviveBrokenPipes();
    forgetTheTerminal();
    choosePlatform();
    preferSoftwareRendering();
    silenceTheToolkit();
}

} // namespace tidewick
