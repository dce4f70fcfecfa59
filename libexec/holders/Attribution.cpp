#include "libexec/holders/Attribution.h"

#include "libexec/holders/Cgroups.h"
#include "libexec/holders/Forwarders.h"
#include "libexec/holders/HiddenProcesses.h"
#include "libexec/holders/ProcessTree.h"
#include "libexec/names/CommandName.h"
#include "libexec/proc/Descriptor.h"
#include "products/Users.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>

#include <sys/stat.h>

namespace tidewick::libexec
{
namespace
{

constexpr int nobody = 0;

/// Whether a program of that name opens its listeners before it starts more of itself.
bool isForker(std::string_view comm)
{
    constexpr std::array<std::string_view, 4> names{"apache2", "nginx", "postgres", "redis-server"};
    return std::find(names.begin(), names.end(), comm) != names.end() ||
           comm.starts_with("php-fpm");
}

class Attribution
{
public:
    Attribution(SocketHolders &found, int proc, int cgroups)
        : m_found(found),
          m_proc(proc),
          m_hidden(proc, found.denied),
          m_cgroups(proc, cgroups),
          m_tree(proc)
    {
    }

    void run(const std::vector<ListeningSocket> &sockets)
    {
        std::vector<bool> isSeen(sockets.size());
        for (const Holder &holder : m_found.holders)
            isSeen[holder.socket] = true;
        for (size_t i = 0; i < sockets.size(); ++i) {
            // A socket without an inode has no descriptor: it is not accepted yet, or orphaned.
            if (isSeen[i] || sockets[i].inode == 0 || sockets[i].user > lastServiceUser)
                continue;
            const int pid = holderOf(sockets[i]);
            if (pid != nobody)
                add(pid, i, sockets[i].user);
        }
    }

private:
    int holderOf(const ListeningSocket &socket)
    {
        if (socket.user == 0) {
            const int forwarder = onlyForwarder(socket);
            if (forwarder != nobody)
                return forwarder;
        }
        const auto [answer, isNew] =
            m_answers.try_emplace(std::pair(socket.user, socket.cgroup), nobody);
        if (isNew)
            answer->second = onlyRoot(candidates(socket));
        return answer->second;
    }

    int onlyForwarder(const ListeningSocket &socket)
    {
        if (!m_forwarders)
            m_forwarders.emplace(m_proc, m_hidden);
        std::set<int> pids = m_forwarders->of(socket);
        std::erase_if(pids, [&](int pid) { return !mayShareCgroup(pid, socket); });
        return pids.size() == 1 ? *pids.begin() : nobody;
    }

    /// The processes of the socket's user in the cgroup that it was made in. Root has many more
    /// processes than one service's, so for root that cgroup must be known, and a service's.
    std::set<int> candidates(const ListeningSocket &socket)
    {
        const bool isOfService = socket.cgroup != 0 && socket.cgroup != m_cgroups.root();
        if (socket.user == 0 && !isOfService)
            return {};
        std::set<int> pids;
        for (const int pid : m_hidden.of(socket.user)) {
            const bool mayHold =
                socket.user == 0 ? m_cgroups.of(pid) == socket.cgroup : mayShareCgroup(pid, socket);
            if (mayHold && m_hidden.isInOwnNetwork(pid))
                pids.insert(pid);
        }
        return pids;
    }

    /// False where the socket was made in a cgroup that the process is not in.
    bool mayShareCgroup(int pid, const ListeningSocket &socket)
    {
        const uint64_t cgroup = m_cgroups.of(pid);
        return cgroup == 0 || socket.cgroup == 0 || cgroup == socket.cgroup;
    }

    /// The one process that all the others descend from. Where there are others, each of them could
    /// be the holder, whatever its name: a shell, a launcher or a watcher starts the server. Only
    /// known services hold their listeners above processes of their own name.
    int onlyRoot(const std::set<int> &pids)
    {
        int root = nobody;
        for (const int pid : pids) {
            if (m_tree.nearestAncestor(pid, pids) != 0)
                continue;
            if (root != nobody)
                return nobody;
            root = pid;
        }
        const ProcessTree::Node *const node = root == nobody ? nullptr : m_tree.node(root);
        if (node == nullptr)
            return nobody;
        const bool isAlone = pids.size() == 1;
        const bool isForkers =
            isForker(node->comm) && std::all_of(pids.begin(), pids.end(), [&](int pid) {
                const ProcessTree::Node *const other = m_tree.node(pid);
                return other != nullptr && other->comm == node->comm;
            });
        return isAlone || isForkers ? root : nobody;
    }

    void add(int pid, size_t socket, uint32_t user)
    {
        const Descriptor directory(openDirectory(m_proc, std::to_string(pid).c_str()));
        struct stat status;
        // The id may be another process's by now.
        if (!directory.isOpen() || fstat(directory.value(), &status) != 0 || status.st_uid != user)
            return;
        const auto [entry, isNew] = m_added.try_emplace(pid, m_found.processes.size());
        if (isNew)
            m_found.processes.push_back({pid, user, hiddenCommandOf(directory.value(), "")});
        m_found.holders.push_back({entry->second, socket, -1});
    }

    SocketHolders &m_found;
    int m_proc;
    HiddenProcesses m_hidden;
    Cgroups m_cgroups;
    ProcessTree m_tree;
    std::map<std::pair<uint32_t, uint64_t>, int> m_answers; ///< by user and cgroup
    std::optional<Forwarders> m_forwarders;
    std::map<int, size_t> m_added;
};

} // namespace

void attributeHidden(SocketHolders &found, const std::vector<ListeningSocket> &sockets, int proc,
                     int cgroups)
{
    if (!found.denied.empty())
        Attribution(found, proc, cgroups).run(sockets);
}

} // namespace tidewick::libexec
