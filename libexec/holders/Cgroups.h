#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace tidewick::libexec
{

/// The version 2 cgroups of processes. Their ids are the inodes of their directories (cgroups(7)),
/// and a socket has the id of the one that it was made in.
///
/// A process tells the path of its cgroup, so the tree is never walked: a user may fill it.
class Cgroups
{
public:
    /// The directories /proc and of the cgroup tree; the latter is -1 where there is none.
    Cgroups(int proc, int tree);

    /// 0 where it is not known.
    uint64_t of(int pid);
    /// The cgroup of what belongs to no service.
    uint64_t root() const { return m_root; }

private:
    uint64_t idOf(const std::string &path) const;

    int m_proc;
    int m_tree;
    uint64_t m_root;
    std::map<int, uint64_t> m_ofProcess;
    std::map<std::string, uint64_t> m_ids; ///< by path
};

/// The directory of the version 2 tree; -1 where there is none.
int openCgroupTree();

} // namespace tidewick::libexec
