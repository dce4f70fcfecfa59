#pragma once

#include <string>

namespace tidewick::libexec
{

/// The fields of `lsof -p PID -a -d cwd -F n`; nothing where the directory may not be read.
std::string workingDirectoryFields(int pid);

} // namespace tidewick::libexec
