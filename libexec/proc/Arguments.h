#pragma once

#include <string_view>
#include <vector>

namespace tidewick::libexec
{

/// The arguments in /proc/PID/cmdline, each ended by a NUL.
std::vector<std::string_view> splitArguments(std::string_view commandLine);

/// The value of an option written as -name VALUE, -name=VALUE, or with two hyphens.
std::string_view optionValue(const std::vector<std::string_view> &arguments, std::string_view name);

} // namespace tidewick::libexec
