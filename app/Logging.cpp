#include "app/Logging.h"

namespace tidewick
{

Q_LOGGING_CATEGORY(appLog, "tidewick.app", QtWarningMsg)

} // namespace tidewick
