#pragma once

#include <QLoggingCategory>

namespace tidewick
{

/// "tidewick.state", silent unless QT_LOGGING_RULES switches it on.
Q_DECLARE_LOGGING_CATEGORY(stateLog)

} // namespace tidewick
