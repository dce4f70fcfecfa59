#include "app/AppDelegate.h"

#include <QCoreApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>

namespace tidewick
{
namespace
{

constexpr QSize iconPoints(18, 18);
const QString productName = QStringLiteral("Tidewick");

/// The fallback icon; a program built without it is broken beyond repair.
QImage networkSymbol()
{
    QSvgRenderer symbol(QStringLiteral(":/network.svg"));
    if (!symbol.isValid())
        qFatal("tidewick: the symbol \"network\" is missing");
    QImage image(iconPoints * 8, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    symbol.render(&painter);
    return image;
}

} // namespace

AppDelegate::AppDelegate(SystemInterfaces system, QThreadPool &pool, MakeStatusItem makeStatusItem)
    : m_system(std::move(system)), m_pool(pool), m_makeStatusItem(std::move(makeStatusItem))
{
}

AppDelegate::~AppDelegate() = default;

void AppDelegate::applicationDidFinishLaunching()
{
    m_statusItem = m_makeStatusItem();
    updateStatusIcon(0);
    m_statusItem->setMenu({{QStringLiteral("Quit Tidewick"), QStringLiteral("q"), [this] {
                                quitApp();
                            }}});

    m_appState = std::make_unique<AppState>(m_system, m_pool);
    m_appState->stream(&AppState::runningPorts, &AppState::runningPortsChanged, this,
                       [this](const QList<PortInfo> &runningPorts) {
                           updateStatusIcon(runningPorts.size());
                           m_statusItem->setToolTip(productName, statusSummary(runningPorts));
                       });
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
    const auto live = std::count_if(runningPorts.begin(), runningPorts.end(),
                                    [](const PortInfo &record) { return record.isHttpAccessible; });
    const QString running = QStringLiteral("%1 running").arg(runningPorts.size());
    return live == 0 ? running : QStringLiteral("%1, %2 live").arg(running).arg(live);
}

} // namespace tidewick
