#pragma once

#include "libexec/holders/SocketHolders.h"

#include <map>
#include <set>
#include <vector>

#include <sys/types.h>

namespace tidewick::libexec
{

/// The processes whose descriptors we may not read, as far as they may hold a socket of ours.
class HiddenProcesses
{
public:
    /// `proc` is the directory /proc.
    HiddenProcesses(int proc, const std::vector<DeniedProcess> &denied);

    /// Those of one user that are in our network namespace.
    const std::set<int> &of(uint32_t user);

private:
    int m_proc;
    ino_t m_ownNetwork; ///< 0: not known
    std::map<uint32_t, std::vector<int>> m_denied;
    std::map<uint32_t, std::set<int>> m_inNetwork;
};

} // namespace tidewick::libexec
