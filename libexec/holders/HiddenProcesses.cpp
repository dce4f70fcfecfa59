#include "libexec/holders/HiddenProcesses.h"

#include "libexec/proc/ProcFiles.h"

#include <sys/stat.h>

namespace tidewick::libexec
{
namespace
{

/// The network namespace of a process, by the inode of its socket table. 0: not known.
ino_t networkOf(int proc, const char *process)
{
    struct stat status;
    const std::string table = std::string(process) + "/net/tcp";
    return fstatat(proc, table.c_str(), &status, 0) == 0 ? status.st_ino : 0;
}

} // namespace

HiddenProcesses::HiddenProcesses(int proc, const std::vector<DeniedProcess> &denied)
    : m_proc(proc), m_ownNetwork(networkOf(proc, "self"))
{
    for (const DeniedProcess &process : denied)
        m_ofUser[process.user].push_back(process.pid);
}

bool HiddenProcesses::isInOwnNetwork(int pid) const
{
    return m_ownNetwork != 0 && networkOf(m_proc, std::to_string(pid).c_str()) == m_ownNetwork;
}

} // namespace tidewick::libexec
