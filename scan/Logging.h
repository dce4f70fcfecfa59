#pragma once

#include <QLoggingCategory>

namespace tidewick
{

/// "tidewick.scan", silent unless QT_LOGGING_RULES switches it on.
Q_DECLARE_LOGGING_CATEGORY(scanLog)

} // namespace tidewick
