#include "scan/Logging.h"

namespace tidewick
{

Q_LOGGING_CATEGORY(scanLog, "tidewick.scan", QtWarningMsg)

} // namespace tidewick
