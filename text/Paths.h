#pragma once

#include <QString>
#include <QStringList>

namespace tidewick
{

/// The components of `path` below the root; a relative path starts in the current directory.
QStringList pathComponents(const QString &path);

/// The last of them, or "/" where there is none: the root itself.
QString lastComponent(const QStringList &components);

} // namespace tidewick
