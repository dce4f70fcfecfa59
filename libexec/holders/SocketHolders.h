#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tidewick::libexec
{

/// What is needed of a process to show it.
struct Process
{
    int pid = 0;
    uint32_t user = 0;
    std::string command;
};

/// That a process has a socket open, once however many descriptors it has of it.
struct Holder
{
    size_t process = 0;  ///< its place in SocketHolders::processes
    size_t socket = 0;   ///< its place among the sockets
    int descriptor = -1; ///< the first one; -1: not told, the process shuts its descriptors
};
/// Whether nobody saw that descriptor.
inline bool isInferred(const Holder &holder)
{
    return holder.descriptor < 0;
}

/// A process whose descriptors we may not read.
struct DeniedProcess
{
    int pid = 0;
    uint32_t user = 0;
};

/// Which processes hold which listening sockets.
struct SocketHolders
{
    std::vector<Process> processes;
    std::vector<Holder> holders;
    std::vector<DeniedProcess> denied;
};

} // namespace tidewick::libexec
