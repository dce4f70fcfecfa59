#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace tidewick::libexec
{

/// The parents and start times of processes, each read at most once.
class ProcessTree
{
public:
    /// `proc` is the directory /proc.
    explicit ProcessTree(int proc) : m_proc(proc) {}

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
    int m_proc;
    std::map<int, Node> m_nodes;
};

} // namespace tidewick::libexec
