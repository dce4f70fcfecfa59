#include "libexec/cells/ProcessCells.h"

#include "libexec/cells/NumberCells.h"
#include "libexec/cells/PrintedText.h"
#include "libexec/proc/Descriptor.h"
#include "libexec/proc/ProcessStat.h"

#include <array>

#include <fcntl.h>
#include <unistd.h>

namespace tidewick::libexec
{
namespace
{

int openProcess(int pid)
{
    std::array<char, 32> memory{};
    TextBuffer path(memory);
    path.add("/proc/");
    addNumber(path, unsigned(pid));
    return openDirectory(AT_FDCWD, memory.data());
}

double ticksPerSecond()
{
    return double(sysconf(_SC_CLK_TCK));
}

/// What the stat file tells. The name is a part of `memory`.
std::optional<ProcessStat> readStat(const Descriptor &process, std::span<char> memory)
{
    TextBuffer text(memory);
    if (!process.isOpen() || !text.addFile(process.value(), "stat"))
        return std::nullopt;
    return parseStat(text.view());
}

/// Seconds since the process was started.
double lifeTime(const ProcessStat &stat)
{
    std::array<char, 128> memory;
    TextBuffer uptime(memory);
    uptime.addFile(AT_FDCWD, "/proc/uptime");
    return lifeTime(stat, uptime.view(), ticksPerSecond());
}

using StatMemory = std::array<char, 4096>;

} // namespace

bool addCommand(TextBuffer &line, int pid)
{
    static std::array<char, commandLineLimit> memory;
    const Descriptor process(openProcess(pid));
    TextBuffer arguments(memory);
    if (process.isOpen() && arguments.addFile(process.value(), "cmdline") &&
        !arguments.view().empty()) {
        joinArguments(arguments);
        addPrinted(line, arguments.view(), isUtf8Environment());
        return true;
    }
    StatMemory statMemory;
    const auto stat = readStat(process, statMemory);
    if (!stat)
        return false;
    std::array<char, 128> nameMemory;
    TextBuffer name(nameMemory);
    name.add('[');
    name.add(stat->comm);
    name.add(']');
    addPrinted(line, name.view(), isUtf8Environment());
    if (stat->state == 'Z')
        line.add(" <defunct>");
    return true;
}

bool addMemoryAndCpu(TextBuffer &line, int pid)
{
    // The list of a user's groups stands before the memory, and may be this long.
    static std::array<char, 1U << 20U> memory;
    const Descriptor process(openProcess(pid));
    StatMemory statMemory;
    const auto stat = readStat(process, statMemory);
    if (!stat)
        return false;
    TextBuffer status(memory);
    status.addFile(process.value(), "status");
    addResident(line, status.view());
    line.add(' ');
    addPercentage(line, *stat, lifeTime(*stat), ticksPerSecond());
    return true;
}

bool addElapsedTime(TextBuffer &line, int pid)
{
    StatMemory statMemory;
    const auto stat = readStat(Descriptor(openProcess(pid)), statMemory);
    if (!stat)
        return false;
    addElapsed(line, uint64_t(lifeTime(*stat)));
    return true;
}

} // namespace tidewick::libexec
