#include "views/card/CardFacts.h"

#include "text/Paths.h"
#include "text/Truncated.h"
#include "text/VisibleText.h"
#include "views/card/Formats.h"
#include "views/panel/PortListModel.h"

namespace tidewick
{
namespace
{

/// One line that shows all it holds. No file's name is longer, but a process may claim one of 128
/// KB, and laying that out takes long.
QString shown(const QString &name)
{
    constexpr qsizetype limit = 255;
    return visibleText(truncated(name, limit)).trimmed();
}

/// As a label: nothing for nothing.
QString lastComponentOf(const QString &path)
{
    return path.isEmpty() ? QString() : shown(lastComponent(pathComponents(path)));
}

CardFacts::Level level(double value, double raised, double high)
{
    if (value >= high)
        return CardFacts::High;
    return value >= raised ? CardFacts::Raised : CardFacts::Normal;
}

} // namespace

void CardFacts::setRecord(const QVariant &record)
{
    if (record.metaType() != QMetaType::fromType<PortInfo>())
        return;
    m_variant = record;
    m_record = *static_cast<const PortInfo *>(record.constData());
    Q_EMIT recordChanged();
}

QString CardFacts::pidFigure() const
{
    return shown(m_record.pid());
}

QString CardFacts::title() const
{
    const QString name = shown(m_record.projectName());
    return name.isEmpty() ? QStringLiteral("Local Server") : name;
}

QString CardFacts::framework() const
{
    return m_record.metadata.value(QStringLiteral("framework"));
}

QString CardFacts::memory() const
{
    return formatMemory(m_record.memoryUsage);
}

QString CardFacts::memoryFigure() const
{
    return m_record.memoryUsage > 0 ? memory() : QString();
}

CardFacts::Level CardFacts::memoryLevel() const
{
    return level(m_record.memoryUsage, 512, 2048);
}

QString CardFacts::cpuFigure() const
{
    return m_record.cpuUsage > 0.1 ? formatCpu(m_record.cpuUsage) : QString();
}

CardFacts::Level CardFacts::cpuLevel() const
{
    return level(m_record.cpuUsage, 30, 80);
}

QString CardFacts::uptime() const
{
    return formatUptime(m_record.startTime);
}

QString CardFacts::script() const
{
    return lastComponentOf(m_record.metadata.value(QStringLiteral("script")));
}

QString CardFacts::directoryName() const
{
    return lastComponentOf(m_record.workingDirectory);
}

QString CardFacts::sentence() const
{
    QStringList parts{title(),
                      isLive() ? QStringLiteral("live on port %1").arg(m_record.port())
                               : QStringLiteral("port %1").arg(m_record.port()),
                      framework(),
                      memoryFigure(),
                      cpuFigure(),
                      uptime()};
    parts.removeAll(QString());
    return parts.join(QStringLiteral(", "));
}

} // namespace tidewick
