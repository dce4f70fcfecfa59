#pragma once

namespace tidewick
{

/// Sets the variables that the toolkit reads when the application object is made, except those that
/// the user has set, and silences some of its warnings. Drops what would change the tools' output,
/// and lets no broken pipe end the program. Call it before that, while there is one thread.
void prepareEnvironment();

} // namespace tidewick
