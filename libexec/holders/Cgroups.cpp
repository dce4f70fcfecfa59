#include "libexec/holders/Cgroups.h"

#include "libexec/proc/ProcFiles.h"
#include "libexec/proc/Words.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>

namespace tidewick::libexec
{

Cgroups::Cgroups()
{
    for (const char *const place : {"/sys/fs/cgroup", "/sys/fs/cgroup/unified"}) {
        struct statfs system;
        if (statfs(place, &system) == 0 && system.f_type == CGROUP2_SUPER_MAGIC) {
            m_root = place;
            break;
        }
    }
}

const std::set<int> &Cgroups::processes(uint64_t id)
{
    const auto [entry, isNew] = m_processes.try_emplace(id);
    std::set<int> &pids = entry->second;
    if (!isNew)
        return pids;
    if (m_root.empty() || id == 0)
        return pids;
    if (!m_isCollected)
        collect(m_root, 0);
    m_isCollected = true;
    const auto path = m_paths.find(id);
    std::string text;
    if (path == m_paths.end() ||
        !readFile(AT_FDCWD, (path->second + "/cgroup.procs").c_str(), text))
        return pids;
    std::string_view rest = text;
    while (!rest.empty())
        pids.insert(int(parseNumber(takeLine(rest)).value_or(0)));
    return pids;
}

void Cgroups::collect(const std::string &directory, int level)
{
    constexpr int deepest = 32;
    DIR *const entries = level < deepest ? opendir(directory.c_str()) : nullptr;
    if (entries == nullptr)
        return;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): each stream has one reader
    while (const dirent *const entry = readdir(entries)) {
        if (entry->d_type != DT_DIR || entry->d_name[0] == '.')
            continue;
        const std::string path = directory + '/' + entry->d_name;
        m_paths.emplace(entry->d_ino, path);
        collect(path, level + 1);
    }
    closedir(entries);
}

} // namespace tidewick::libexec
