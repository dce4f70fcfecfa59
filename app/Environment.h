#pragma once

namespace tidewick
{

/// Sets the variables that the toolkit reads when the application object is made, except those that
/// the user has set, and silences some of its warnings. Call it before that, while there is one
/// thread.
void prepareEnvironment();

} // namespace tidewick
