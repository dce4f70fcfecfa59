#include "libexec/names/ProgramName.h"

#include "libexec/names/LowerCase.h"

#include <algorithm>
#include <array>

namespace tidewick::libexec
{
namespace
{

/// node-22, node-20.1
bool isVersionedNode(std::string_view name)
{
    constexpr std::string_view prefix = "node-";
    return name.size() > prefix.size() && name.starts_with(prefix) &&
           name.find_first_not_of("0123456789.", prefix.size()) == std::string_view::npos;
}

/// The program that the dynamic loader was asked to run (ld.so(8)); empty where none is named.
std::string_view loaderOperand(const std::vector<std::string_view> &arguments)
{
    constexpr std::array<std::string_view, 7> withValue{
        "--library-path",      "--inhibit-rpath",       "--audit", "--preload", "--argv0",
        "--glibc-hwcaps-mask", "--glibc-hwcaps-prepend"};
    for (size_t i = 1; i < arguments.size(); ++i) {
        if (!arguments[i].starts_with("--"))
            return arguments[i];
        if (std::find(withValue.begin(), withValue.end(), arguments[i]) != withValue.end())
            ++i;
    }
    return {};
}

} // namespace

std::string_view baseName(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

bool stripDeleted(std::string_view &path)
{
    constexpr std::string_view deletedMark = " (deleted)";
    if (!path.ends_with(deletedMark))
        return false;
    path.remove_suffix(deletedMark.size());
    return true;
}

std::string foldName(std::string_view name)
{
    constexpr std::string_view wrapped = "-wrapped";
    if (name.size() > 4 && lowerCase(name.substr(name.size() - 4)) == ".exe")
        name.remove_suffix(4);
    if (name.size() > wrapped.size() + 1 && name.starts_with('.') && name.ends_with(wrapped))
        name = name.substr(1, name.size() - wrapped.size() - 1);
    if (name == "nodejs" || isVersionedNode(name))
        return "node";
    if (name == "bunx")
        return "bun";
    if (name == "mariadbd")
        return "mysqld";
    // One file with several names, of which Debian takes this one for the file's.
    if (name == "redis-check-rdb")
        return "redis-server";
    return std::string(name);
}

std::string programName(std::string_view executable, bool isReallyThere,
                        const std::vector<std::string_view> &arguments)
{
    constexpr std::string_view memoryFile = "/memfd:";
    if (!isReallyThere)
        stripDeleted(executable);
    std::string_view name = executable.starts_with(memoryFile)
                                ? executable.substr(memoryFile.size())
                                : baseName(executable);
    if (isDynamicLoader(name)) {
        const std::string_view operand = baseName(loaderOperand(arguments));
        if (!operand.empty())
            name = operand;
    }
    return foldName(name);
}

bool isDynamicLoader(std::string_view name)
{
    if (!name.starts_with("ld-"))
        return false;
    const size_t suffix = name.rfind(".so");
    return suffix != std::string_view::npos &&
           (suffix + 3 == name.size() || name[suffix + 3] == '.');
}

std::string hiddenProgramName(std::string_view comm)
{
    // Node.js names its main thread since version 24.
    if (comm == "MainThread" || comm == "node-MainThread")
        return "node";
    return foldName(comm);
}

} // namespace tidewick::libexec
