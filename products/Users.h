#pragma once

#include <cstdint>

namespace tidewick
{

/// The user ids of services, which run one program each, end here (login.defs(5), SYS_UID_MAX).
/// Above are persons: what another person runs is neither listed nor asked.
inline constexpr uint32_t lastServiceUser = 999;

} // namespace tidewick
