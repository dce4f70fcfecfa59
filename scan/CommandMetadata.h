#pragma once

#include <QMap>
#include <QString>

namespace tidewick
{

/// The facts that the command line `from` of the process `command` tells, under the keys
/// "framework", "script" (a whole token of the command line) and "container". A key without a fact
/// is absent. All comparisons are case-sensitive. Pure.
QMap<QString, QString> extractMetadata(const QString &from, const QString &command);

} // namespace tidewick
