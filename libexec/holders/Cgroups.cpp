#include "libexec/holders/Cgroups.h"

#include "libexec/proc/Descriptor.h"
#include "libexec/proc/ProcFiles.h"
#include "libexec/proc/Words.h"

#include <optional>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

namespace tidewick::libexec
{
namespace
{

/// The line of the version 2 hierarchy in /proc/PID/cgroup is "0::PATH".
std::optional<std::string_view> pathIn(std::string_view text)
{
    constexpr std::string_view start = "0::/";
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        if (line.starts_with(start))
            return line.substr(start.size());
    }
    return std::nullopt;
}

} // namespace

Cgroups::Cgroups(int proc, int tree) : m_proc(proc), m_tree(tree), m_root(idOf(".")) {}

uint64_t Cgroups::of(int pid)
{
    const auto [entry, isNew] = m_ofProcess.try_emplace(pid, 0);
    if (!isNew || m_root == 0)
        return entry->second;
    std::string text;
    if (!readFile(m_proc, (std::to_string(pid) + "/cgroup").c_str(), text))
        return 0;
    const auto place = pathIn(text);
    if (!place)
        return 0;
    const std::string path = "./" + std::string(*place);
    const auto [id, isNewPath] = m_ids.try_emplace(path, 0);
    if (isNewPath)
        id->second = idOf(path);
    return entry->second = id->second;
}

uint64_t Cgroups::idOf(const std::string &path) const
{
    struct stat status;
    return m_tree >= 0 && fstatat(m_tree, path.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0
               ? status.st_ino
               : 0;
}

int openCgroupTree()
{
    for (const char *const place : {"/sys/fs/cgroup", "/sys/fs/cgroup/unified"}) {
        struct statfs system;
        if (statfs(place, &system) == 0 && system.f_type == CGROUP2_SUPER_MAGIC)
            return openDirectory(AT_FDCWD, place);
    }
    return -1;
}

} // namespace tidewick::libexec
