#include "model/PortInfo.h"

#include "text/Paths.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace tidewick
{
namespace
{

/// The name without its extension. A name whose only dot is the first character stays whole.
QString withoutExtension(const QString &name)
{
    const auto dot = name.lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? name.left(dot) : name;
}

} // namespace

PortInfo::PortInfo(qint64 port, QString pid, QString command, QString user, QString address)
    : m_port(port),
      m_pid(std::move(pid)),
      m_command(std::move(command)),
      m_user(std::move(user)),
      m_address(std::move(address))
{
}

QString PortInfo::projectName() const
{
    static const QStringList buildDirectories{QStringLiteral("src"), QStringLiteral("dist"),
                                              QStringLiteral("build"), QStringLiteral("server")};
    if (!workingDirectory.isEmpty()) {
        QStringList directories = pathComponents(workingDirectory);
        if (buildDirectories.contains(lastComponent(directories)))
            directories.removeLast();
        return lastComponent(directories);
    }
    const auto script = metadata.constFind(QStringLiteral("script"));
    if (script != metadata.constEnd())
        return withoutExtension(lastComponent(pathComponents(*script)));
    return QStringLiteral("Node App");
}

qsizetype liveCount(const QList<PortInfo> &records)
{
    return std::count_if(records.begin(), records.end(),
                         [](const PortInfo &record) { return record.isHttpAccessible; });
}

} // namespace tidewick
