#pragma once

#include "model/PortInfo.h"

namespace tidewick
{

/// Returns `record` with what can be learnt of its process. Never fails. For now nothing is
/// looked up and the record comes back as it is.
PortInfo enrichPortInfo(PortInfo record);

} // namespace tidewick
