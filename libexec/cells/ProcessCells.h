#pragma once

#include "libexec/proc/TextBuffer.h"

namespace tidewick::libexec
{

/// What ps reads of a command line.
inline constexpr size_t commandLineLimit = (1U << 17U) - 1;

/// Adds what `ps -p PID -o command=` prints: the arguments, or the name in brackets where there are
/// none. False, as of the others, where there is no such process. The arguments are read from that
/// process's memory, which it may keep locked for ever.
bool addCommand(TextBuffer &line, int pid);
/// Adds what `-o rss=,%cpu=` prints: resident KiB, and the processor time over the life time.
bool addMemoryAndCpu(TextBuffer &line, int pid);
/// Adds what `-o etime=` prints: the time since its start.
bool addElapsedTime(TextBuffer &line, int pid);

} // namespace tidewick::libexec
