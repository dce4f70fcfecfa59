#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace tidewick::libexec
{

/// The directories of the version 2 hierarchy by their ids, which are their inodes (cgroups(7)).
class Cgroups
{
public:
    Cgroups();

    /// The processes directly in it. None for the root, which holds what belongs to no service.
    const std::set<int> &processes(uint64_t id);

private:
    void collect(const std::string &directory, int level);

    std::string m_root;
    bool m_isCollected = false;
    std::map<uint64_t, std::string> m_paths;
    std::map<uint64_t, std::set<int>> m_processes;
};

} // namespace tidewick::libexec
