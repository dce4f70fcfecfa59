#pragma once

#include <string>
#include <string_view>

namespace tidewick::tools
{

/// The line that `ps -p PID -o command=` prints: the arguments, or the name in brackets where there
/// are none. Empty where there is no such process; so for the others.
std::string commandCell(int pid);
/// The line of `-o rss=,%cpu=`: resident KiB, and the processor time over the life time.
std::string memoryAndCpuCells(int pid);
/// The line of `-o etime=`: [[DD-]hh:]mm:ss.
std::string elapsedCell(int pid);

/// The arguments of /proc/PID/cmdline with blanks between them and for line breaks, without the
/// NULs at the end.
std::string joinArguments(std::string_view commandLine);
/// A text as ps prints it: what this locale cannot print is '?' or '.'.
std::string escapeText(std::string_view text);
/// `ticks` of `seconds * ticksPerSecond` in percent, cut to a tenth, in ps's four columns.
std::string percentage(double ticks, double seconds, double ticksPerSecond);
/// Seconds as ps's elapsed time, in its eleven columns.
std::string elapsedText(long seconds);

} // namespace tidewick::tools
