#pragma once

#include <optional>
#include <string>

namespace tidewick
{

/// What the program needs and the system does not give, or nothing. The toolkit and the thread
/// pools cannot do without a thread or without memory: they would wait for ever or crash halfway
/// through the start. Call it first, while there is one thread.
std::optional<std::string> missingResource();

} // namespace tidewick
