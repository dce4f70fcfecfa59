#include "libexec/holders/ProcessTree.h"

#include "libexec/proc/ProcFiles.h"
#include "libexec/proc/ProcessStat.h"

namespace tidewick::libexec
{

const ProcessTree::Node *ProcessTree::node(int pid)
{
    const auto known = m_nodes.find(pid);
    if (known != m_nodes.end())
        return &known->second;
    std::string text;
    if (!readFile(m_proc, (std::to_string(pid) + "/stat").c_str(), text))
        return nullptr;
    const auto stat = parseStat(text);
    if (!stat)
        return nullptr;
    return &m_nodes.insert({pid, {stat->parent, stat->startTime, std::string(stat->comm)}})
                .first->second;
}

int ProcessTree::depth(int pid)
{
    // No chain is as long as this: one that seems to be was read while pids were used again.
    constexpr int longest = 10'000;
    int depth = 0;
    for (const Node *at = node(pid); at != nullptr && at->parent > 0 && depth < longest;
         at = node(at->parent))
        ++depth;
    return depth;
}

int ProcessTree::nearestAncestor(int pid, const std::set<int> &among)
{
    // Deeper trees are made by hand, to keep us busy.
    constexpr int longest = 100;
    const Node *at = node(pid);
    for (int steps = 0; at != nullptr && at->parent > 0 && steps < longest; ++steps) {
        if (among.contains(at->parent))
            return at->parent;
        at = node(at->parent);
    }
    return 0;
}

} // namespace tidewick::libexec
