#pragma once

#include <QMap>
#include <QString>

namespace tidewick
{

/// What the command line `from` of the process called `command` tells of it, under the keys
/// "framework", "script" (a token of the command line, whole) and "container". A key that nothing
/// is known for is absent. All comparisons are case-sensitive. Pure.
QMap<QString, QString> extractMetadata(const QString &from, const QString &command);

} // namespace tidewick
