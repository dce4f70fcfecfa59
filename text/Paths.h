#pragma once

#include <QString>
#include <QStringList>

namespace tidewick
{

/// The components of `path` below the root; a relative path starts in the current directory.
QStringList pathComponents(const QString &path);

/// The last component, or "/" if there is none.
QString lastComponent(const QStringList &components);

} // namespace tidewick
