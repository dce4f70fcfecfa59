#include "app/TidewickApp.h"

#include "app/AppDelegate.h"
#include "app/Logging.h"
#include "platform/session/ActivationToken.h"
#include "platform/session/AutostartEntry.h"
#include "platform/session/DesktopAppearance.h"
#include "platform/session/DesktopWorkspace.h"
#include "platform/session/SingleInstance.h"
#include "platform/session/TerminationSignals.h"
#include "platform/tray/DesktopStatusItem.h"
#include "platform/window/BackdropBlur.h"
#include "platform/window/DesktopWindow.h"
#include "platform/window/PopoverWindow.h"
#include "scan/ProcessToolRunner.h"
#include "scan/http/CurlHttpClient.h"
#include "state/Workers.h"
#include "update/UpdaterController.h"

#include <QIcon>
#include <QPointer>
#include <QThreadPool>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

namespace tidewick
{
namespace
{

/// How long a start by hand waits for a tray before it shows the panel without one. A desktop that
/// is too busy to answer may take longer.
constexpr int trayTimeoutMs = 1500;

/// How long the end waits for tasks that were told to stop.
constexpr int stopTimeoutMs = 200;

SystemInterfaces realSystem()
{
    const QString supplied =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../libexec/tidewick");
    return {std::make_shared<ProcessToolRunner>(), ToolTable::suppliedOverStock(supplied),
            std::make_shared<CurlHttpClient>()};
}

/// The parts of the desktop that refer to each other. A part that does not exist now is null.
struct Shell
{
    QPointer<DesktopStatusItem> statusItem;

    bool hasItem() const { return statusItem && statusItem->isInTray(); }
    bool isTrayKnown() const { return !statusItem || statusItem->isTrayKnown(); }
};

/// `shell` must outlive everything that the result makes.
Desktop realDesktop(Shell &shell)
{
    return {
        [](bool isStarting) { return std::make_unique<UpdaterController>(isStarting); },
        [&shell] {
            auto item = std::make_unique<DesktopStatusItem>();
            shell.statusItem = item.get();
            return item;
        },
        [&shell] {
            auto popover = std::make_unique<PopoverWindow>([&shell] { return shell.hasItem(); });
            new BackdropBlur(*popover, Panel::cornerRadius);
            return popover;
        },
        [] { return std::make_unique<DesktopWorkspace>(); },
        [] { return std::make_unique<AutostartEntry>(QCoreApplication::applicationFilePath()); },
        [] { return std::make_unique<DesktopWindow>(); },
        [] {
            return std::make_unique<DesktopAppearance>();
        }};
}

/// Qt 6.4 draws in threads of the global pool, one for each processor, and waits for them. Our
/// small pictures are drawn no sooner with more than one. Newer Qt has a pool of its own for that.
void keepToOneDrawingThread()
{
    QThreadPool *const pool = QThreadPool::globalInstance();
    pool->setMaxThreadCount(1);
    pool->setExpiryTimeout(1000);
}

/// True where the session started this process, and not the user.
bool takeAutostarted()
{
    const bool isAutostarted = qEnvironmentVariableIsSet(autostartVariable);
    qunsetenv(autostartVariable);
    return isAutostarted;
}

/// Shows the panel because the user asked for it; `platformData` proves that to the desktop.
void activate(AppDelegate &delegate, const QVariantMap &platformData)
{
    const auto proof = [&platformData](const QString &key) {
        return platformData.value(key).toByteArray();
    };
    const ActivationToken startup(proof(QStringLiteral("desktop-startup-id")));
    const ActivationToken token(proof(QStringLiteral("activation-token")));
    delegate.activate();
}

} // namespace

TidewickApp::TidewickApp(int &argc, char **argv)
    : m_isAutostarted(takeAutostarted()),
      m_platformData(takePlatformData()),
      m_application(argc, argv)
{
    keepToOneDrawingThread();
    QApplication::setApplicationName(QStringLiteral("tidewick"));
    QApplication::setDesktopFileName(QStringLiteral("org.tidewick.Tidewick"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/menubar_icon.png")));
    QApplication::setQuitOnLastWindowClosed(false);
}

int TidewickApp::run()
{
    qCDebug(appLog) << "Tidewick" << TIDEWICK_VERSION << "Qt" << qVersion()
                    << QApplication::platformName() << qgetenv("XDG_CURRENT_DESKTOP")
                    << "started by the session" << m_isAutostarted;
    SingleInstance instance;
    switch (instance.claim()) {
    case InstanceClaim::first:
        break;
    case InstanceClaim::another:
        if (!m_isAutostarted)
            instance.activateOther(m_platformData);
        return EXIT_SUCCESS;
    case InstanceClaim::refused:
        std::fputs("tidewick: the session bus refuses the name org.tidewick.Tidewick, so a second "
                   "start will not notice this one\n",
                   stderr);
        break;
    case InstanceClaim::noBus:
        std::fputs("tidewick: no session bus, so only an X11 tray can show the icon\n", stderr);
        break;
    }

    const TerminationSignals termination; // to the very end: a second signal changes nothing
    Workers workers;
    int status = EXIT_SUCCESS;
    {
        Shell shell;
        AppDelegate delegate(realSystem(), workers, realDesktop(shell));
        QObject::connect(&termination, &TerminationSignals::received, &delegate,
                         &AppDelegate::quitApp);
        QObject::connect(&instance, &SingleInstance::sessionEnded, &delegate,
                         &AppDelegate::quitApp);
        QTimer trayTimeout;
        QObject::connect(&instance, &SingleInstance::activated, &delegate,
                         [&](const QVariantMap &data) {
                             trayTimeout.stop(); // the user has found the panel
                             activate(delegate, data);
                         });
        delegate.applicationDidFinishLaunching();
        QObject::connect(&trayTimeout, &QTimer::timeout, &delegate, [&] {
            if (!shell.isTrayKnown())
                return;
            trayTimeout.stop();
            if (!shell.hasItem())
                activate(delegate, m_platformData);
        });
        if (!m_isAutostarted)
            trayTimeout.start(trayTimeoutMs);
        status = QApplication::exec();
    }
    qCDebug(appLog) << "ends with status" << status;
    // A tool may be stuck beyond even a kill; then its task must not hold up the end.
    if (!workers.waitForDone(stopTimeoutMs))
        std::_Exit(status);
    return status;
}

} // namespace tidewick
