#include "libexec/names/CommandName.h"

#include "libexec/names/KnownNames.h"
#include "libexec/names/ProgramName.h"
#include "libexec/proc/Arguments.h"
#include "libexec/proc/LocalFiles.h"
#include "libexec/proc/ProcFiles.h"

#include <algorithm>
#include <climits>

namespace tidewick::libexec
{
namespace
{

std::string commOf(int directory, std::string_view prefix)
{
    std::string comm;
    readFile(directory, (std::string(prefix) + "comm").c_str(), comm);
    if (comm.ends_with('\n'))
        comm.pop_back();
    return comm;
}

/// No file's name is longer, but what a process calls itself may be.
std::string shownName(const std::string &name)
{
    return name.empty() ? "?" : name.substr(0, NAME_MAX);
}

} // namespace

std::string commandOf(int directory, std::string_view prefix)
{
    const std::string exe = std::string(prefix) + "exe";
    std::string executable;
    if (!readLink(directory, exe.c_str(), executable))
        return hiddenCommandOf(directory, prefix);
    std::string_view path = executable;
    const bool isReallyThere =
        stripDeleted(path) && isSameLocalFile(directory, exe.c_str(), executable.c_str());
    std::string name = programName(executable, isReallyThere, {});
    if (isKnownName(name))
        return name;
    if (isDynamicLoader(name)) {
        const std::string commandLine = readCommandLine(directory, prefix);
        return shownName(programName(executable, isReallyThere, splitArguments(commandLine)));
    }
    // One file may have several names, and comm is the one that it was started by, or what it calls
    // itself. It is believed only beside the executable, and only for the very same file.
    const std::string comm = commOf(directory, prefix);
    std::string alias = foldName(comm);
    const std::string place = executable.substr(0, executable.rfind('/') + 1) + comm;
    if (isKnownName(alias) && isSameLocalFile(directory, exe.c_str(), place.c_str()))
        return alias;
    return shownName(name.empty() ? comm : name);
}

std::string hiddenCommandOf(int directory, std::string_view prefix)
{
    return shownName(hiddenProgramName(commOf(directory, prefix)));
}

} // namespace tidewick::libexec
