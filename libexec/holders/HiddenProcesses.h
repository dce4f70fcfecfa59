#pragma once

#include "libexec/holders/SocketHolders.h"

#include <map>
#include <vector>

#include <sys/types.h>

namespace tidewick::libexec
{

/// The processes whose descriptors we may not read.
class HiddenProcesses
{
public:
    /// `proc` is the directory /proc.
    HiddenProcesses(int proc, const std::vector<DeniedProcess> &denied);

    const std::vector<int> &of(uint32_t user) { return m_ofUser[user]; }
    /// Whether it is in our network namespace. No other one holds a socket of ours.
    bool isInOwnNetwork(int pid) const;

private:
    int m_proc;
    ino_t m_ownNetwork; ///< 0: not known
    std::map<uint32_t, std::vector<int>> m_ofUser;
};

} // namespace tidewick::libexec
