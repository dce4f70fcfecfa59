#pragma once

#include "libexec/Holders.h"

#include <string>

namespace tidewick::tools
{

/// The rows of `lsof -i TCP -P -n -sTCP:LISTEN` (lsof(8), "OUTPUT"), the header above them; nothing
/// where there is no row.
std::string socketTable(const Scan &scan, const std::vector<ListeningSocket> &sockets);

/// The fields of `lsof -p PID -a -d cwd -F n`; nothing where the folder may not be read.
std::string workingDirectoryFields(int pid);

/// A path as lsof prints it: bytes that are not printable in this locale escaped (lsof(8)).
std::string escapePath(std::string_view path);

} // namespace tidewick::tools
