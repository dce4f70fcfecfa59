#include "tools/Attribution.h"

#include "tools/ProcFiles.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <set>

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

namespace tidewick::tools
{
namespace
{

/// The user ids of services, which run one program each (login.defs(5), SYS_UID_MAX).
constexpr uint32_t lastServiceUser = 999;
constexpr int nobody = 0;

std::string procPath(int pid, const char *file)
{
    return "/proc/" + std::to_string(pid) + '/' + file;
}

/// The folders of the version 2 hierarchy by their ids, which are their inodes (cgroups(7)).
class Cgroups
{
public:
    Cgroups()
    {
        for (const char *const place : {"/sys/fs/cgroup", "/sys/fs/cgroup/unified"}) {
            struct statfs system;
            if (statfs(place, &system) == 0 && system.f_type == CGROUP2_SUPER_MAGIC) {
                m_root = place;
                break;
            }
        }
    }

    /// The processes directly in it. None for the root, which holds what belongs to no service.
    const std::set<int> &processes(uint64_t id)
    {
        const auto [entry, isNew] = m_processes.try_emplace(id);
        std::set<int> &pids = entry->second;
        if (!isNew)
            return pids;
        if (m_root.empty() || id == 0)
            return pids;
        if (!m_isCollected)
            collect(m_root, 0);
        m_isCollected = true;
        const auto path = m_paths.find(id);
        std::string text;
        if (path == m_paths.end() ||
            !readFile(AT_FDCWD, (path->second + "/cgroup.procs").c_str(), text))
            return pids;
        std::string_view rest = text;
        while (!rest.empty()) {
            const size_t end = std::min(rest.find('\n'), rest.size());
            pids.insert(int(parseNumber(rest.substr(0, end)).value_or(0)));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
        return pids;
    }

private:
    void collect(const std::string &folder, int level)
    {
        constexpr int deepest = 32;
        DIR *const entries = level < deepest ? opendir(folder.c_str()) : nullptr;
        if (entries == nullptr)
            return;
        // NOLINTNEXTLINE(concurrency-mt-unsafe): each stream has one reader
        while (const dirent *const entry = readdir(entries)) {
            if (entry->d_type != DT_DIR || entry->d_name[0] == '.')
                continue;
            const std::string path = folder + '/' + entry->d_name;
            m_paths.emplace(entry->d_ino, path);
            collect(path, level + 1);
        }
        closedir(entries);
    }

    std::string m_root;
    bool m_isCollected = false;
    std::map<uint64_t, std::string> m_paths;
    std::map<uint64_t, std::set<int>> m_processes;
};

class Attribution
{
public:
    Attribution(Scan &scan, const std::vector<ListeningSocket> &sockets)
        : m_scan(scan), m_sockets(sockets)
    {
        struct stat status;
        if (stat("/proc/self/net/tcp", &status) == 0)
            m_ownNetwork = status.st_ino;
    }

    void run()
    {
        std::vector<bool> isExplained(m_sockets.size());
        for (const Holder &holder : m_scan.holders)
            isExplained[holder.socket] = true;
        for (size_t i = 0; i < m_sockets.size(); ++i) {
            // A socket without an inode has no descriptor: it is not accepted yet, or orphaned.
            if (isExplained[i] || m_sockets[i].inode == 0)
                continue;
            const int pid = holderOf(m_sockets[i]);
            if (pid != nobody)
                add(pid, i);
        }
    }

private:
    int holderOf(const ListeningSocket &socket)
    {
        if (socket.user == 0) {
            const int proxy = dockerProxy(socket);
            if (proxy != nobody)
                return proxy;
        }
        const int service = onlyRoot(inCgroup(socket));
        if (service != nobody)
            return service;
        if (socket.user == 0)
            return nobody;
        const std::vector<int> &own = ofUser(socket.user);
        if (socket.user <= lastServiceUser) {
            const int root = onlyRoot(own);
            if (root != nobody)
                return root;
        }
        std::vector<int> withPort;
        for (const int pid : own) {
            if (holdsPort(commandLine(pid), socket.port))
                withPort.push_back(pid);
        }
        return onlyRoot(withPort);
    }

    int dockerProxy(const ListeningSocket &socket)
    {
        std::vector<int> exact;
        std::vector<int> wildcard;
        for (const int pid : proxies()) {
            if (!mayShareCgroup(pid, socket))
                continue;
            const ProxyMatch match = matchDockerProxy(splitArguments(commandLine(pid)), socket);
            if (match == ProxyMatch::exact)
                exact.push_back(pid);
            else if (match == ProxyMatch::wildcard)
                wildcard.push_back(pid);
        }
        const std::vector<int> &best = exact.empty() ? wildcard : exact;
        return best.size() == 1 ? best[0] : nobody;
    }

    /// Root's processes of that name in this network: a container may run forwarders of its own,
    /// for the same ports. A program that only runs as root by its set-user-id bit has
    /// the arguments that its caller chose.
    const std::vector<int> &proxies()
    {
        if (m_proxies)
            return *m_proxies;
        m_proxies.emplace();
        std::string text;
        for (const int pid : ofUser(0)) {
            if (readFile(AT_FDCWD, procPath(pid, "comm").c_str(), text) &&
                text == "docker-proxy\n" &&
                readFile(AT_FDCWD, procPath(pid, "status").c_str(), text) &&
                statusValue(text, "Uid") == "0\t0\t0\t0" && isInOwnNetwork(pid))
                m_proxies->push_back(pid);
        }
        return *m_proxies;
    }

    /// False where the socket was made in a cgroup that the process is not in.
    bool mayShareCgroup(int pid, const ListeningSocket &socket)
    {
        const std::set<int> &members = m_cgroups.processes(socket.cgroup);
        return members.empty() || members.contains(pid);
    }

    std::vector<int> inCgroup(const ListeningSocket &socket)
    {
        std::vector<int> pids;
        const std::set<int> &inside = m_cgroups.processes(socket.cgroup);
        if (inside.empty())
            return pids;
        for (const DeniedProcess &process : m_scan.denied) {
            if (inside.contains(process.pid) && isInOwnNetwork(process.pid))
                pids.push_back(process.pid);
        }
        return pids;
    }

    const std::vector<int> &ofUser(uint32_t user)
    {
        const auto known = m_ofUser.find(user);
        if (known != m_ofUser.end())
            return known->second;
        std::vector<int> pids;
        for (const DeniedProcess &process : m_scan.denied) {
            if (process.user == user && (user == 0 || isInOwnNetwork(process.pid)))
                pids.push_back(process.pid);
        }
        return m_ofUser[user] = std::move(pids);
    }

    bool isInOwnNetwork(int pid) const
    {
        struct stat status;
        return m_ownNetwork != 0 && stat(procPath(pid, "net/tcp").c_str(), &status) == 0 &&
               status.st_ino == m_ownNetwork;
    }

    /// The one process that all the others descend from, all of one name: a shell or a launcher and
    /// what it started are two, and either could be the holder.
    int onlyRoot(const std::vector<int> &pids)
    {
        int root = nobody;
        const std::set<int> all(pids.begin(), pids.end());
        for (const int pid : pids) {
            if (m_tree.isBelow(pid, all))
                continue;
            if (root != nobody)
                return nobody;
            root = pid;
        }
        const ProcessTree::Node *const node = root == nobody ? nullptr : m_tree.node(root);
        if (node == nullptr)
            return nobody;
        const bool isOneProgram = std::all_of(pids.begin(), pids.end(), [&](int pid) {
            const ProcessTree::Node *const other = m_tree.node(pid);
            return other == nullptr || other->comm == node->comm;
        });
        return isOneProgram ? root : nobody;
    }

    const std::string &commandLine(int pid)
    {
        constexpr size_t limit = 1U << 17U;
        const auto [line, isNew] = m_commandLines.try_emplace(pid);
        if (isNew)
            readFile(AT_FDCWD, procPath(pid, "cmdline").c_str(), line->second, limit);
        return line->second;
    }

    void add(int pid, size_t socket)
    {
        if (!m_added.contains(pid)) {
            const Descriptor folder(openFolder(AT_FDCWD, procPath(pid, "").c_str()));
            struct stat status;
            if (!folder.isOpen() || fstat(folder.value(), &status) != 0)
                return;
            m_added[pid] = m_scan.processes.size();
            m_scan.processes.push_back({pid, status.st_uid, commandOf(folder.value(), "")});
        }
        m_scan.holders.push_back({m_added[pid], socket, -1});
    }

    Scan &m_scan;
    const std::vector<ListeningSocket> &m_sockets;
    ino_t m_ownNetwork = 0;
    Cgroups m_cgroups;
    ProcessTree m_tree;
    std::map<uint32_t, std::vector<int>> m_ofUser;
    std::optional<std::vector<int>> m_proxies;
    std::map<int, std::string> m_commandLines;
    std::map<int, size_t> m_added;
};

} // namespace

void attributeHidden(Scan &scan, const std::vector<ListeningSocket> &sockets)
{
    if (!scan.denied.empty())
        Attribution(scan, sockets).run();
}

} // namespace tidewick::tools
