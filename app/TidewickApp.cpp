#include "app/TidewickApp.h"

#include "app/AppDelegate.h"
#include "platform/SingleInstance.h"
#include "platform/StatusNotifierItem.h"
#include "platform/TerminationSignals.h"
#include "scan/CurlHttpClient.h"
#include "scan/ProcessToolRunner.h"

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

} // namespace

TidewickApp::TidewickApp(int &argc, char **argv) : m_application(argc, argv)
{
    QGuiApplication::setApplicationName(QStringLiteral("tidewick"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Tidewick"));
    QGuiApplication::setDesktopFileName(QStringLiteral("org.tidewick.Tidewick"));
    QGuiApplication::setQuitOnLastWindowClosed(false);
}

int TidewickApp::run()
{
    switch (claimSingleInstance()) {
    case InstanceClaim::first:
        break;
    case InstanceClaim::another:
        return EXIT_SUCCESS;
    case InstanceClaim::noBus:
        std::fputs("tidewick: no session bus, hence no status item\n", stderr);
        break;
    }

    QThreadPool pool;
    pool.setMaxThreadCount(poolWidth);
    int status = EXIT_SUCCESS;
    {
        AppDelegate delegate(realSystem(), pool,
                             [] { return std::make_unique<StatusNotifierItem>(); });
        const TerminationSignals termination;
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
