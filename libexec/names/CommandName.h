#pragma once

#include <string>
#include <string_view>

namespace tidewick::libexec
{

/// What the COMMAND column shows of a process: the program that the kernel was asked to run. Its
/// files in /proc, or those of one of its threads, are at `prefix`, "" or "../", from `directory`.
std::string commandOf(int directory, std::string_view prefix);

} // namespace tidewick::libexec
