#include "model/PortInfo.h"

#include <QDir>
#include <QStringList>

#include <utility>

namespace tidewick
{
namespace
{

/// The components of `path` below the root; a relative path starts in the current directory.
QStringList components(const QString &path)
{
    const QString absolute =
        path.startsWith(QLatin1Char('/')) ? path : QDir::currentPath() + QLatin1Char('/') + path;
    return absolute.split(QLatin1Char('/'), Qt::SkipEmptyParts);
}

/// The last component, or "/" where the path is the root itself.
QString lastComponent(const QStringList &components)
{
    return components.isEmpty() ? QStringLiteral("/") : components.last();
}

/// Without the text from the last "." on; a name that only starts with a dot keeps it.
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
    static const QStringList buildFolders{QStringLiteral("src"), QStringLiteral("dist"),
                                          QStringLiteral("build"), QStringLiteral("server")};
    if (!workingDirectory.isEmpty()) {
        QStringList folders = components(workingDirectory);
        if (buildFolders.contains(lastComponent(folders)))
            folders.removeLast();
        return lastComponent(folders);
    }
    const auto script = metadata.constFind(QStringLiteral("script"));
    if (script != metadata.constEnd())
        return withoutExtension(lastComponent(components(*script)));
    return QStringLiteral("Node App");
}

} // namespace tidewick
