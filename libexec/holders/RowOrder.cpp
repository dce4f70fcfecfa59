#include "libexec/holders/RowOrder.h"

#include "libexec/holders/ProcessTree.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace tidewick::libexec
{

void sortRows(SocketHolders &found, const std::vector<ListeningSocket> &sockets, int proc,
              uint32_t viewer)
{
    struct Age
    {
        uint64_t startTime = 0;
        int depth =
            0; ///< a parent and its child may have started in the same hundredth of a second
    };
    std::vector<Age> ages(found.processes.size());
    std::map<uint16_t, size_t> firstOfPort;
    ProcessTree tree(proc);
    const auto measure = [&](size_t process) {
        const int pid = found.processes[process].pid;
        const ProcessTree::Node *const node = tree.node(pid);
        // One that has ended meanwhile is nobody's server: it comes last.
        ages[process] =
            node == nullptr ? Age{UINT64_MAX, 0} : Age{node->startTime, tree.depth(pid)};
    };
    for (const Holder &holder : found.holders) {
        const auto [first, isNew] =
            firstOfPort.insert({sockets[holder.socket].port, holder.process});
        if (!isNew && first->second != holder.process) {
            measure(first->second);
            measure(holder.process);
        }
    }
    const auto key = [&](const Holder &holder) {
        const Age &age = ages[holder.process];
        const ListeningSocket &socket = sockets[holder.socket];
        const Process &process = found.processes[holder.process];
        return std::tuple(socket.port, isInferred(holder), process.user != viewer, age.startTime,
                          age.depth, process.pid, holder.descriptor, socket.inode);
    };
    std::sort(found.holders.begin(), found.holders.end(),
              [&key](const Holder &a, const Holder &b) { return key(a) < key(b); });
}

} // namespace tidewick::libexec
