#include "app/AppDelegate.h"

#include "views/Symbol.h"

#include <QCoreApplication>
#include <QImage>
#include <QPainter>

namespace tidewick
{
namespace
{

constexpr QSize iconPoints(18, 18);
constexpr QSize panelPoints(480, 540);
const QString productName = QStringLiteral("Tidewick");

/// The fallback icon; a program built without it is broken beyond repair.
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

AppDelegate::AppDelegate(SystemInterfaces system, QThreadPool &pool, Desktop desktop)
    : m_system(std::move(system)), m_pool(pool), m_desktop(std::move(desktop))
{
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching()
{
    m_statusItem = m_desktop.makeStatusItem();
    updateStatusIcon(0);
    m_statusItem->setAction([this] { togglePopover(); });
    m_statusItem->setMenu({{QStringLiteral("Quit Tidewick"), QStringLiteral("q"), [this] {
                                quitApp();
                            }}});

    m_popover = m_desktop.makePopover();
    m_popover->setContentSize(panelPoints);

    m_appState = std::make_unique<AppState>(m_system, m_pool);
    m_appState->stream(&AppState::runningPorts, &AppState::runningPortsChanged, this,
                       [this](const QList<PortInfo> &runningPorts) {
                           updateStatusIcon(runningPorts.size());
                           m_statusItem->setToolTip(productName, statusSummary(runningPorts));
                       });
    showPanel();
}

void AppDelegate::showPanel()
{
    m_workspace = m_desktop.makeWorkspace();
    m_panel = std::make_unique<Panel>(*m_appState);
    connect(m_panel.get(), &Panel::quitRequested, this, &AppDelegate::quitApp);
    connect(m_panel.get(), &Panel::openRequested, this,
            [this](const QUrl &url) { m_workspace->openUrl(url); });
    connect(m_panel.get(), &Panel::revealRequested, this,
            [this](const QString &path) { m_workspace->revealFolder(path); });
    m_popover->setContentView(QUrl(QStringLiteral("qrc:/qt/qml/Tidewick/ContentView.qml")),
                              {{QStringLiteral("panel"), QVariant::fromValue(m_panel.get())}});
}

void AppDelegate::togglePopover()
{
    m_popover->toggle();
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
