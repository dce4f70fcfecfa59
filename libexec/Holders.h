#pragma once

#include "libexec/ProcText.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace tidewick::tools
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
    size_t process = 0;  ///< its place in Scan::processes
    size_t socket = 0;   ///< its place among the sockets
    int descriptor = -1; ///< the first one; -1: not told, the process shuts its descriptors
};

/// A process whose descriptors we may not read.
struct DeniedProcess
{
    int pid = 0;
    uint32_t user = 0;
};

struct Scan
{
    std::vector<Process> processes;
    std::vector<Holder> holders;
    std::vector<DeniedProcess> denied;
};

/// Walks /proc once for the processes that hold one of `sockets`.
Scan findHolders(const std::vector<ListeningSocket> &sockets);

/// What the COMMAND column shows of a process: the program that the kernel was asked to run. Its
/// files in /proc, or those of one of its threads, are at `prefix`, "" or "../", from `folder`.
std::string commandOf(int folder, std::string_view prefix);

/// The parents and start times of processes, each read at most once.
class ProcessTree
{
public:
    struct Node
    {
        int parent = 0;
        uint64_t startTime = 0;
        std::string comm;
    };
    /// Null where the process is gone.
    const Node *node(int pid);
    /// How many ancestors it has.
    int depth(int pid);
    /// The nearest of its ancestors that is among them; 0 where none is.
    int nearestAncestor(int pid, const std::set<int> &among);

private:
    std::map<int, Node> m_nodes;
};

/// Rows of one port stand together, the oldest ancestor first: the first row of a port wins.
void sortByAncestry(Scan &scan, const std::vector<ListeningSocket> &sockets);

} // namespace tidewick::tools
