#pragma once

#include <QLoggingCategory>

namespace tidewick
{

/// "tidewick.update", silent unless QT_LOGGING_RULES switches it on.
Q_DECLARE_LOGGING_CATEGORY(updateLog)

} // namespace tidewick
