#include "state/Logging.h"

namespace tidewick
{

Q_LOGGING_CATEGORY(stateLog, "tidewick.state", QtWarningMsg)

} // namespace tidewick
