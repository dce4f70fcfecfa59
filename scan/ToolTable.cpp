#include "scan/ToolTable.h"

#include <QFileInfo>

namespace tidewick
{

ToolTable ToolTable::stock()
{
    return {{QStringLiteral("/usr/sbin/lsof"), QStringLiteral("/usr/bin/lsof")},
            {QStringLiteral("/bin/ps")},
            {QStringLiteral("/bin/kill")}};
}

ToolTable ToolTable::suppliedOverStock(const QString &directory)
{
    ToolTable table = stock();
    table.lsof.prepend(directory + QStringLiteral("/lsof"));
    table.ps.prepend(directory + QStringLiteral("/ps"));
    return table;
}

QString presentTool(const QStringList &candidates)
{
    for (const QString &path : candidates) {
        const QFileInfo file(path);
        if (file.isFile() && file.isExecutable())
            return path;
    }
    return candidates.last();
}

} // namespace tidewick
