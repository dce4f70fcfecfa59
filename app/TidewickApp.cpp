#include "app/TidewickApp.h"

#include "app/AppDelegate.h"
#include "platform/AutostartEntry.h"
#include "platform/BackdropBlur.h"
#include "platform/DesktopAppearance.h"
#include "platform/DesktopWindow.h"
#include "platform/PopoverWindow.h"
#include "platform/SingleInstance.h"
#include "platform/StatusNotifierItem.h"
#include "platform/TerminationSignals.h"
#include "platform/Workspace.h"
#include "scan/CurlHttpClient.h"
#include "scan/ProcessToolRunner.h"

#include <QIcon>
#include <QThreadPool>

#include <cstdio>
#include <cstdlib>

namespace tidewick
{
namespace
{

/// Wide enough that a few scans stuck in a tool leave room for the next.
constexpr int poolWidth = 8;

/// How long the end waits for tasks that were told to stop.
constexpr int stopPatienceMs = 200;

SystemInterfaces realSystem()
{
    const QString supplied =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../libexec/tidewick");
    return {std::make_shared<ProcessToolRunner>(), ToolTable::suppliedOverStock(supplied),
            std::make_shared<CurlHttpClient>()};
}

/// Until updates are checked for.
class NoUpdater : public Updater
{
    void checkForUpdates() override {}
    bool canCheckForUpdates() const override { return false; }
};

Desktop realDesktop()
{
    return {
        [](bool) { return std::make_unique<NoUpdater>(); },
        [] { return std::make_unique<StatusNotifierItem>(); },
        [] {
            auto popover = std::make_unique<PopoverWindow>();
            new BackdropBlur(*popover);
            return popover;
        },
        [] { return std::make_unique<DesktopWorkspace>(); },
        [] { return std::make_unique<AutostartEntry>(QCoreApplication::applicationFilePath()); },
        [] { return std::make_unique<DesktopWindow>(); },
        [] {
            return std::make_unique<DesktopAppearance>();
        }};
}

/// The panel is drawn without OpenGL, which costs less memory and time here, unless the user's
/// environment says otherwise. Must be called before the toolkit starts; hands `argc` back.
int &preferSoftwareRendering(int &argc)
{
    if (qEnvironmentVariableIsSet("QT_QUICK_BACKEND") ||
        qEnvironmentVariableIsSet("QSG_RHI_BACKEND"))
        return argc;
    qputenv("QT_QUICK_BACKEND", "software");
    if (!qEnvironmentVariableIsSet("QT_XCB_GL_INTEGRATION"))
        qputenv("QT_XCB_GL_INTEGRATION", "none");
    return argc;
}

} // namespace

TidewickApp::TidewickApp(int &argc, char **argv)
    : m_application(preferSoftwareRendering(argc), argv)
{
    QGuiApplication::setApplicationName(QStringLiteral("tidewick"));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.tidewick.Tidewick"));
    QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/menubar_icon.png")));
    QGuiApplication::setQuitOnLastWindowClosed(false);
}

int TidewickApp::run()
{
    switch (claimSingleInstance()) {
    case InstanceClaim::first:
        break;
    case InstanceClaim::another:
        return EXIT_SUCCESS;
    case InstanceClaim::refused:
        std::fputs("tidewick: the session bus refuses the name org.tidewick.Tidewick, so a second "
                   "start will not notice this one\n",
                   stderr);
        break;
    case InstanceClaim::noBus:
        std::fputs("tidewick: no session bus, hence no status item\n", stderr);
        break;
    }

    const TerminationSignals termination; // to the very end: a second signal changes nothing
    QThreadPool pool;
    pool.setMaxThreadCount(poolWidth);
    int status = EXIT_SUCCESS;
    {
        AppDelegate delegate(realSystem(), pool, realDesktop());
        QObject::connect(&termination, &TerminationSignals::received, &delegate,
                         &AppDelegate::quitApp);
        delegate.applicationDidFinishLaunching();
        status = QGuiApplication::exec();
    }
    // A task that does not come back, its tool beyond even a kill, must not hold up the end.
    if (!pool.waitForDone(stopPatienceMs))
        std::_Exit(status);
    return status;
}

} // namespace tidewick
