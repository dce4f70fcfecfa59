#pragma once

#include <QString>
#include <QStringList>

namespace tidewick
{

/// Where each tool may lie, best place first. Looked up anew for every run, so that a tool
/// installed while the program runs is found by the next scan.
struct ToolTable
{
    QStringList lsof;
    QStringList ps;
    QStringList kill;

    /// The system's own tools.
    static ToolTable stock();
    /// The supplied lsof and ps in `directory`, where they are present, over the stock ones.
    static ToolTable suppliedOverStock(const QString &directory);
};

/// The first of `candidates`, which are not empty, that is an executable file, else the last one:
/// starting that one then fails with the system's reason.
QString presentTool(const QStringList &candidates);

} // namespace tidewick
