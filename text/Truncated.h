#pragma once

#include <QString>

namespace tidewick
{

/// `text`, truncated to `limit` UTF-16 units and followed by an ellipsis if it is longer.
QString truncated(const QString &text, qsizetype limit);

} // namespace tidewick
