#pragma once

#include <QString>
#include <QStringList>

namespace tidewick
{

/// The paths where each tool may be, the best one first. They are looked up for every run, so the
/// next scan finds a tool that was installed meanwhile.
struct ToolTable
{
    QStringList lsof;
    QStringList ps;
    QStringList kill;

    /// The system's own tools.
    static ToolTable stock();
    /// The supplied lsof and ps in `directory` come first, then the stock ones.
    static ToolTable suppliedOverStock(const QString &directory);
};

/// The first of `candidates` that is an executable file, or else the last one; starting that one
/// fails with the system's reason. `candidates` must not be empty.
QString presentTool(const QStringList &candidates);

} // namespace tidewick
