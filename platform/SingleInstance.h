#pragma once

namespace tidewick
{

/// What the session bus answered when this process asked to be the one instance.
enum class InstanceClaim { first, another, refused, noBus };

/// Claims the application id as a name on the session bus; it is held until the process ends.
InstanceClaim claimSingleInstance();

} // namespace tidewick
