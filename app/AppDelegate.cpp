#include "app/AppDelegate.h"

#include "app/ApplicationPalette.h"
#include "views/controls/Symbol.h"

#include <QCoreApplication>
#include <QImage>
#include <QPainter>

namespace tidewick
{
namespace
{

constexpr QSize iconPoints(18, 18);
constexpr QSize panelPoints(480, 540);
constexpr QSize settingsPoints(320, 150);
const QString productName = QStringLiteral("Tidewick");

QUrl viewUrl(const char *file)
{
    return QUrl(QStringLiteral("qrc:/qt/qml/Tidewick/%1").arg(QLatin1String(file)));
}

/// The fallback icon. A build without it is broken, so the program ends.
QImage networkSymbol()
{
    QImage image(iconPoints * 8, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    if (!drawSymbol(painter, QStringLiteral("network"), image.rect(), statusInk))
        qFatal("tidewick: the symbol \"network\" is missing");
    return image;
}

} // namespace

AppDelegate::AppDelegate(SystemInterfaces system, Workers &workers, Desktop desktop)
    : m_system(std::move(system)),
      m_workers(workers),
      m_desktop(std::move(desktop)),
      m_updaterController(m_desktop.makeUpdater(true))
{
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching()
{
    m_statusItem = m_desktop.makeStatusItem();
    updateStatusIcon(0);
    m_statusItem->setAction([this] { togglePopover(); });
    m_statusItem->setMenu({});

    m_popover = m_desktop.makePopover();
    m_popover->setContentSize(panelPoints);
    m_popover->setBehavior(PopoverBehavior::transient);

    m_appState = std::make_unique<AppState>(m_system, m_workers);
    m_appState->stream(&AppState::runningPorts, &AppState::runningPortsChanged, this,
                       [this](const QList<PortInfo> &runningPorts) {
                           updateStatusIcon(runningPorts.size());
                           m_statusItem->setToolTip(productName, statusSummary(runningPorts));
                       });
    hostPanel();
}

void AppDelegate::hostPanel()
{
    m_workspace = m_desktop.makeWorkspace();
    m_panel = std::make_unique<Panel>(*m_appState);
    connect(m_panel.get(), &Panel::quitRequested, this, &AppDelegate::quitApp);
    connect(m_panel.get(), &Panel::openRequested, this,
            [this](const QUrl &url) { m_workspace->openUrl(url); });
    connect(m_panel.get(), &Panel::revealRequested, this,
            [this](const QString &path) { m_workspace->revealDirectory(path); });
    m_appearance = m_desktop.makeAppearance();
    m_appearance->observe([this](const Surroundings &surroundings) {
        m_panel->setBackdrop(surroundings.isBlurred      ? Panel::Blurred
                             : surroundings.isComposited ? Panel::Translucent
                                                         : Panel::Opaque);
        m_panel->setReducesMotion(surroundings.reducesMotion);
        followColorScheme(surroundings.colorScheme);
    });
    m_popover->setContentView(viewUrl("panel/ContentView.qml"),
                              {{QStringLiteral("panel"), QVariant::fromValue(m_panel.get())}});
    m_popover->makeReady();
    // The first cards come with the first listeners.
    connect(m_appState.get(), &AppState::runningPortsChanged, m_panel.get(),
            [this](const QList<PortInfo> &runningPorts) {
                if (m_hadCards || runningPorts.isEmpty())
                    return;
                m_hadCards = true;
                m_popover->makeReady();
            });
}

void AppDelegate::togglePopover()
{
    const auto event = m_statusItem ? m_statusItem->currentEvent() : std::nullopt;
    if (!event)
        return;
    if (event->type == ClickType::rightMouseUp) {
        openContextMenu();
    } else if (m_popover->isShown()) {
        m_popover->performClose();
    } else {
        m_popover->show(event);
        m_popover->becomeKey();
    }
}

void AppDelegate::activate()
{
    if (!m_popover)
        return;
    m_popover->show(std::nullopt);
    m_popover->becomeKey();
}

void AppDelegate::openContextMenu()
{
    m_statusItem->setMenu({{QStringLiteral("Check for Updates..."),
                            {},
                            [this] { checkForUpdates(); },
                            m_updaterController->canCheckForUpdates()},
                           {QStringLiteral("Settings..."), QStringLiteral(","),
                            [this] {
                                showSettings();
                            }},
                           {},
                           {QStringLiteral("Quit Tidewick"), QStringLiteral("q"), [this] {
                                quitApp();
                            }}});
    m_statusItem->performClick();
    m_statusItem->setMenu({});
}

void AppDelegate::showSettings()
{
    if (!m_settingsWindow)
        m_settingsWindow = makeSettingsWindow();
    m_settingsWindow->makeKeyAndOrderFront();
    m_settingsWindow->activateIgnoringOtherApps();
}

std::unique_ptr<SettingsWindow> AppDelegate::makeSettingsWindow()
{
    m_loginItem = m_desktop.makeLoginItem();
    const bool isEnabled = m_loginItem->status() == LoginItemStatus::enabled;
    m_settings = std::make_unique<Settings>([this] { return m_loginItem->registerItem(); },
                                            [this] { return m_loginItem->unregisterItem(); });
    auto window = m_desktop.makeWindow();
    window->setContentView(viewUrl("settings/SettingsView.qml"),
                           {{QStringLiteral("settings"), QVariant::fromValue(m_settings.get())},
                            {QStringLiteral("launchAtLogin"), isEnabled}});
    window->setTitle(QStringLiteral("Tidewick Settings"));
    window->setStyleMask(WindowStyle::titledAndClosable);
    window->setContentSize(settingsPoints);
    window->center();
    return window;
}

void AppDelegate::checkForUpdates()
{
    m_updaterController->checkForUpdates();
}

void AppDelegate::updateStatusIcon(qint64 count)
{
    if (!m_statusItem)
        return;
    m_statusItem->setImage(statusImage(QStringLiteral(":/menubar_icon.png")), iconPoints);
    if (count == 0) {
        m_statusItem->setAttributedTitle({});
        return;
    }
    m_statusItem->setAttributedTitle({QString::number(count)});
    m_statusItem->setImagePosition(ImagePosition::leading);
}

void AppDelegate::quitApp()
{
    QCoreApplication::quit();
}

QImage statusImage(const QString &iconFile)
{
    const QImage icon(iconFile);
    return icon.isNull() ? networkSymbol() : icon;
}

QString statusSummary(const QList<PortInfo> &runningPorts)
{
    if (runningPorts.isEmpty())
        return QStringLiteral("No active services");
    const auto live = liveCount(runningPorts);
    const QString running = QStringLiteral("%1 running").arg(runningPorts.size());
    return live == 0 ? running : QStringLiteral("%1, %2 live").arg(running).arg(live);
}

} // namespace tidewick
