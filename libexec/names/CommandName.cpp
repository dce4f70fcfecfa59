#include "libexec/names/CommandName.h"

#include "libexec/names/KnownNames.h"
#include "libexec/names/ProgramName.h"
#include "libexec/proc/Arguments.h"
#include "libexec/proc/ProcFiles.h"
#include "libexec/proc/Words.h"

#include <algorithm>
#include <climits>

#include <fcntl.h>

namespace tidewick::libexec
{
namespace
{

constexpr size_t commandLineLimit = 1U << 17U;

} // namespace

std::string commandOf(int directory, std::string_view prefix)
{
    const std::string exe = std::string(prefix) + "exe";
    std::string executable;
    const bool isReadable = readLink(directory, exe.c_str(), executable);
    if (isReadable && !executable.ends_with(')')) {
        // Nearly always: what it was started with adds nothing.
        std::string name = programName(executable, true, {});
        if (isKnownName(name))
            return name;
    }

    std::string commandLine;
    std::string comm;
    readFile(directory, (std::string(prefix) + "cmdline").c_str(), commandLine, commandLineLimit);
    readFile(directory, (std::string(prefix) + "comm").c_str(), comm);
    if (comm.ends_with('\n'))
        comm.pop_back();
    const auto arguments = splitArguments(commandLine);
    std::string name;
    if (!isReadable) {
        name = hiddenProgramName(arguments, comm);
    } else {
        std::string_view path = executable;
        const bool isReallyThere =
            stripDeleted(path) && isSameFile(directory, exe.c_str(), AT_FDCWD, executable.c_str());
        name = programName(executable, isReallyThere, arguments);
        // One file may have several names, and Debian's redis-server is a link to another one. A
        // name is believed only beside the executable, and only for the very same file.
        const std::string_view first = arguments.empty() ? std::string_view() : arguments[0];
        for (const std::string_view other : {first, firstWord(first), std::string_view(comm)}) {
            const std::string alias(baseName(other));
            const std::string place = executable.substr(0, executable.rfind('/') + 1) + alias;
            if (!isKnownName(name) && isKnownName(foldName(alias)) &&
                isSameFile(directory, exe.c_str(), AT_FDCWD, place.c_str()))
                name = foldName(alias);
        }
    }
    if (name.empty())
        name = comm.empty() ? "?" : comm;
    // No file's name is longer, but what a process calls itself may be.
    name.resize(std::min<size_t>(name.size(), NAME_MAX));
    return name;
}

} // namespace tidewick::libexec
