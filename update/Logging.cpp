#include "update/Logging.h"

namespace tidewick
{

Q_LOGGING_CATEGORY(updateLog, "tidewick.update", QtWarningMsg)

} // namespace tidewick
