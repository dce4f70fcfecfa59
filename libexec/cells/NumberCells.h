#pragma once

#include "libexec/proc/ProcessStat.h"
#include "libexec/proc/TextBuffer.h"

#include <cstdint>
#include <string_view>

namespace tidewick::libexec
{

/// Seconds since the process was started, with the text of /proc/uptime.
double lifeTime(const ProcessStat &stat, std::string_view uptime, double ticksPerSecond);

/// Adds the resident KiB, from the text of /proc/PID/status, in at least five columns.
void addResident(TextBuffer &line, std::string_view status);

/// Adds the processor time over the life time in percent, truncated to a tenth, in ps's four
/// columns.
void addPercentage(TextBuffer &line, const ProcessStat &stat, double seconds,
                   double ticksPerSecond);

/// Adds seconds as ps's elapsed time, [[DD-]hh:]mm:ss in eleven columns.
void addElapsed(TextBuffer &line, uint64_t seconds);

/// Adds a number in at least `width` columns.
void addNumber(TextBuffer &line, uint64_t value, size_t width = 1, char fill = ' ');

} // namespace tidewick::libexec
