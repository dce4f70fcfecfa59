#include "text/Paths.h"

#include <QDir>

namespace tidewick
{

QStringList pathComponents(const QString &path)
{
    const QString absolute =
        path.startsWith(QLatin1Char('/')) ? path : QDir::currentPath() + QLatin1Char('/') + path;
    return absolute.split(QLatin1Char('/'), Qt::SkipEmptyParts);
}

QString lastComponent(const QStringList &components)
{
    return components.isEmpty() ? QStringLiteral("/") : components.last();
}

} // namespace tidewick
