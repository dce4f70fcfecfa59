#pragma once

#include <QLoggingCategory>

namespace tidewick
{

/// "tidewick.app", silent unless QT_LOGGING_RULES switches it on.
Q_DECLARE_LOGGING_CATEGORY(appLog)

} // namespace tidewick
