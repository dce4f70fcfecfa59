#pragma once

#include <QLoggingCategory>

namespace tidewick
{

/// "tidewick.platform", silent unless QT_LOGGING_RULES switches it on.
Q_DECLARE_LOGGING_CATEGORY(platformLog)

} // namespace tidewick
