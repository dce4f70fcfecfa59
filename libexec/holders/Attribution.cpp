#include "libexec/holders/Attribution.h"

#include "libexec/holders/Cgroups.h"
#include "libexec/holders/DockerProxy.h"
#include "libexec/holders/NamedPorts.h"
#include "libexec/holders/ProcessTree.h"
#include "libexec/names/CommandName.h"
#include "libexec/proc/Arguments.h"
#include "libexec/proc/Descriptor.h"
#include "libexec/proc/ProcFiles.h"
#include "libexec/proc/ProcessStat.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>

#include <fcntl.h>
#include <sys/stat.h>

namespace tidewick::libexec
{
namespace
{

/// The user ids of services, which run one program each (login.defs(5), SYS_UID_MAX).
constexpr uint32_t lastServiceUser = 999;
constexpr int nobody = 0;

/// Of one process's arguments no more is read, and of one user's.
constexpr size_t argumentsLimit = 1U << 17U;
constexpr size_t userArgumentsLimit = 1U << 24U;
/// Where as many processes name one port, it stays open which one holds it.
constexpr size_t namersLimit = 16;

/// Whether a program of that name opens its listeners before it starts more of itself.
bool isForker(std::string_view comm)
{
    constexpr std::array<std::string_view, 4> names{"apache2", "nginx", "postgres", "redis-server"};
    return std::find(names.begin(), names.end(), comm) != names.end() ||
           comm.starts_with("php-fpm");
}

std::string procPath(int pid, const char *file)
{
    return "/proc/" + std::to_string(pid) + '/' + file;
}

class Attribution
{
public:
    Attribution(SocketHolders &found, const std::vector<ListeningSocket> &sockets)
        : m_found(found), m_sockets(sockets)
    {
        struct stat status;
        if (stat("/proc/self/net/tcp", &status) == 0)
            m_ownNetwork = status.st_ino;
    }

    void run()
    {
        std::vector<bool> isExplained(m_sockets.size());
        for (const Holder &holder : m_found.holders)
            isExplained[holder.socket] = true;
        for (size_t i = 0; i < m_sockets.size(); ++i) {
            // A socket without an inode has no descriptor: it is not accepted yet, or orphaned.
            if (m_sockets[i].inode == 0)
                isExplained[i] = true;
            if (!isExplained[i])
                m_users[m_sockets[i].user].ports.insert(m_sockets[i].port);
        }
        for (const DeniedProcess &process : m_found.denied) {
            m_denied.insert(process.pid);
            m_users[process.user].denied.push_back(process.pid);
        }
        for (size_t i = 0; i < m_sockets.size(); ++i) {
            const int pid = isExplained[i] ? nobody : holderOf(m_sockets[i]);
            if (pid != nobody)
                add(pid, i);
        }
    }

private:
    struct Forwarder
    {
        int pid = 0;
        ListeningSocket asked;
    };

    /// What is known of a user, each process of whom is read once.
    struct User
    {
        std::set<uint16_t> ports; ///< of the sockets that nothing explains
        std::vector<int> denied;
        std::optional<std::set<int>> pids; ///< of those, the ones in this network
        std::set<int> parents;             ///< of these, the ones with others of them below
        /// Which of them name one of the ports in their arguments.
        std::optional<std::map<uint16_t, std::vector<int>>> namers;
    };

    int holderOf(const ListeningSocket &socket)
    {
        if (socket.user == 0) {
            const int forwarder = dockerProxy(socket);
            if (forwarder != nobody)
                return forwarder;
        }
        const int inCgroup = onlyProcessTree(socket.cgroup);
        if (inCgroup != nobody)
            return inCgroup;
        if (socket.user == 0)
            return nobody;
        if (socket.user <= lastServiceUser) {
            const int service = onlyService(socket);
            if (service != nobody)
                return service;
        }
        return onlyNamer(socket);
    }

    int dockerProxy(const ListeningSocket &socket)
    {
        std::vector<int> exact;
        std::vector<int> wildcard;
        for (const Forwarder &forwarder : forwarders()) {
            const ProxyMatch match = matchForwarder(forwarder.asked, socket);
            if (match == ProxyMatch::none || !mayShareCgroup(forwarder.pid, socket))
                continue;
            (match == ProxyMatch::exact ? exact : wildcard).push_back(forwarder.pid);
        }
        const std::vector<int> &best = exact.empty() ? wildcard : exact;
        return best.size() == 1 ? best[0] : nobody;
    }

    /// Root's processes of that name in this network: a container may run forwarders of its own,
    /// for the same ports. A program that only runs as root by its set-user-id bit has
    /// the arguments that its caller chose.
    const std::vector<Forwarder> &forwarders()
    {
        if (m_forwarders)
            return *m_forwarders;
        m_forwarders.emplace();
        for (const int pid : m_users[0].denied) {
            if (!readFile(AT_FDCWD, procPath(pid, "comm").c_str(), m_text) ||
                m_text != "docker-proxy\n" ||
                !readFile(AT_FDCWD, procPath(pid, "status").c_str(), m_text) ||
                statusValue(m_text, "Uid") != "0\t0\t0\t0" || !isInOwnNetwork(pid) ||
                !readFile(AT_FDCWD, procPath(pid, "cmdline").c_str(), m_text, argumentsLimit))
                continue;
            if (const auto asked = forwardedSocket(splitArguments(m_text)))
                m_forwarders->push_back({pid, *asked});
        }
        return *m_forwarders;
    }

    /// False where the socket was made in a cgroup that the process is not in.
    bool mayShareCgroup(int pid, const ListeningSocket &socket)
    {
        const std::set<int> &members = m_cgroups.processes(socket.cgroup);
        return members.empty() || members.contains(pid);
    }

    /// What all of the cgroup's processes that shut their descriptors descend from.
    int onlyProcessTree(uint64_t cgroup)
    {
        const auto [answer, isNew] = m_ofCgroup.try_emplace(cgroup, nobody);
        if (!isNew)
            return answer->second;
        std::set<int> pids;
        for (const int pid : m_cgroups.processes(cgroup)) {
            if (m_denied.contains(pid) && isInOwnNetwork(pid))
                pids.insert(pid);
        }
        return answer->second = onlyRoot(pids);
    }

    /// The same of a service's user.
    int onlyService(const ListeningSocket &socket)
    {
        const auto [answer, isNew] =
            m_ofService.try_emplace(std::pair(socket.user, socket.cgroup), nobody);
        if (!isNew)
            return answer->second;
        std::set<int> pids;
        for (const int pid : *user(socket.user).pids) {
            if (mayShareCgroup(pid, socket))
                pids.insert(pid);
        }
        return answer->second = onlyRoot(pids);
    }

    /// The process of the user's that names the port, unless another one below it may hold it.
    int onlyNamer(const ListeningSocket &socket)
    {
        User &own = user(socket.user);
        if (!own.namers)
            readArguments(own);
        const auto namers = own.namers->find(socket.port);
        if (namers == own.namers->end() || namers->second.size() >= namersLimit)
            return nobody;
        std::set<int> pids;
        for (const int pid : namers->second) {
            if (mayShareCgroup(pid, socket))
                pids.insert(pid);
        }
        const int root = onlyRoot(pids);
        return root != nobody && own.parents.contains(root) && !isForker(m_tree.node(root)->comm)
                   ? nobody
                   : root;
    }

    /// Arguments that are not read to their end tell nothing: a truncated argument may look like a
    /// number.
    void readArguments(User &user)
    {
        user.namers.emplace();
        size_t total = 0;
        for (const int pid : *user.pids) {
            if (!readFile(AT_FDCWD, procPath(pid, "cmdline").c_str(), m_text, argumentsLimit))
                continue;
            total += m_text.size();
            if (total > userArgumentsLimit) {
                user.namers->clear();
                return;
            }
            if (m_text.size() == argumentsLimit)
                continue;
            const PortSet named = portsIn(m_text);
            for (const uint16_t port : user.ports) {
                if (!named[port])
                    continue;
                std::vector<int> &namers = (*user.namers)[port];
                if (namers.size() < namersLimit)
                    namers.push_back(pid);
            }
        }
    }

    User &user(uint32_t id)
    {
        User &user = m_users[id];
        if (user.pids)
            return user;
        user.pids.emplace();
        for (const int pid : user.denied) {
            if (isInOwnNetwork(pid))
                user.pids->insert(pid);
        }
        for (const int pid : *user.pids)
            user.parents.insert(m_tree.nearestAncestor(pid, *user.pids));
        return user;
    }

    bool isInOwnNetwork(int pid) const
    {
        struct stat status;
        return m_ownNetwork != 0 && stat(procPath(pid, "net/tcp").c_str(), &status) == 0 &&
               status.st_ino == m_ownNetwork;
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
                return other == nullptr || other->comm == node->comm;
            });
        return isAlone || isForkers ? root : nobody;
    }

    void add(int pid, size_t socket)
    {
        if (!m_added.contains(pid)) {
            const Descriptor directory(openDirectory(AT_FDCWD, procPath(pid, "").c_str()));
            struct stat status;
            if (!directory.isOpen() || fstat(directory.value(), &status) != 0)
                return;
            m_added[pid] = m_found.processes.size();
            m_found.processes.push_back({pid, status.st_uid, commandOf(directory.value(), "")});
        }
        m_found.holders.push_back({m_added[pid], socket, -1});
    }

    SocketHolders &m_found;
    const std::vector<ListeningSocket> &m_sockets;
    ino_t m_ownNetwork = 0;
    Cgroups m_cgroups;
    ProcessTree m_tree;
    std::set<int> m_denied;
    std::map<uint32_t, User> m_users;
    std::map<uint64_t, int> m_ofCgroup;
    std::map<std::pair<uint32_t, uint64_t>, int> m_ofService;
    std::optional<std::vector<Forwarder>> m_forwarders;
    std::string m_text; ///< the file that is read
    std::map<int, size_t> m_added;
};

} // namespace

void attributeHidden(SocketHolders &found, const std::vector<ListeningSocket> &sockets)
{
    if (!found.denied.empty())
        Attribution(found, sockets).run();
}

} // namespace tidewick::libexec
