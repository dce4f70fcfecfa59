#pragma once

#include "libexec/proc/ProcessStat.h"

#include <string>

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

/// What the numbers are made of. None takes memory, for values that a machine can have: the quick
/// start uses them before there is any.
///
/// Seconds since the process was started, with the text of /proc/uptime.
double lifeTime(const ProcessStat &stat, std::string_view uptime, double ticksPerSecond);
/// Resident KiB, from the text of /proc/PID/status.
std::string residentCell(std::string_view status);
/// The processor time over the life time in percent, cut to a tenth, in ps's four columns.
std::string percentage(const ProcessStat &stat, double seconds, double ticksPerSecond);
/// Seconds as ps's elapsed time, in its eleven columns.
std::string elapsedText(uint64_t seconds);
/// At most 20 columns.
std::string paddedNumber(uint64_t value, size_t width, char fill);

} // namespace tidewick::tools
