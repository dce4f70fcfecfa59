#pragma once

#include <optional>

namespace tidewick::libexec
{

/// The process whose working directory the arguments ask for, as in `lsof -p PID -a -d cwd -F n`.
std::optional<int> directoryQuery(int argc, char *argv[]);

} // namespace tidewick::libexec
