#include "update/PackageId.h"

#include <QStringList>

namespace tidewick
{

QString PackageId::text() const
{
    return QStringList({name, version, architecture, data}).join(QLatin1Char(';'));
}

std::optional<PackageId> parsePackageId(const QString &text)
{
    constexpr qsizetype limit = 1000;
    const QStringList parts = text.split(QLatin1Char(';'));
    if (text.size() > limit || parts.size() != 4 || parts[0].isEmpty() || parts[1].isEmpty())
        return std::nullopt;
    return PackageId{parts[0], parts[1], parts[2], parts[3]};
}

} // namespace tidewick
