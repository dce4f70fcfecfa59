#pragma once

#include <string>
#include <string_view>

namespace tidewick::libexec
{

/// What the COMMAND column shows of a process: the program that the kernel was asked to run. Its
/// files in /proc, or those of one of its threads, are at `prefix`, "" or "../", from `directory`.
///
/// No process holds this up: neither a file system that does not answer is asked, nor is its memory
/// read without a deadline.
std::string commandOf(int directory, std::string_view prefix);

/// The same of a process whose executable we may not see. Its memory is not read at all.
std::string hiddenCommandOf(int directory, std::string_view prefix);

} // namespace tidewick::libexec
