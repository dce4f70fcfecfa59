#include "platform/Logging.h"

namespace tidewick
{

Q_LOGGING_CATEGORY(platformLog, "tidewick.platform", QtWarningMsg)

} // namespace tidewick
