#pragma once

#include <QString>

namespace tidewick
{

/// `text`, or where it is longer than `limit` UTF-16 units as much of it as fits, and an ellipsis.
QString truncated(const QString &text, qsizetype limit);

} // namespace tidewick
