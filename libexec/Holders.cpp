#include "libexec/Holders.h"

#include "libexec/ProcFiles.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <tuple>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tidewick::tools
{
namespace
{

constexpr uint64_t commandLineLimit = 1U << 17U;

/// Finds a socket by its inode.
class SocketIndex
{
public:
    explicit SocketIndex(const std::vector<ListeningSocket> &sockets)
    {
        for (size_t i = 0; i < sockets.size(); ++i)
            m_entries.emplace_back(sockets[i].inode, i);
        std::sort(m_entries.begin(), m_entries.end());
    }

    /// -1: none of ours.
    ssize_t find(uint64_t inode) const
    {
        const auto entry = std::lower_bound(m_entries.begin(), m_entries.end(),
                                            std::pair<uint64_t, size_t>(inode, 0));
        return entry != m_entries.end() && entry->first == inode ? ssize_t(entry->second) : -1;
    }

private:
    std::vector<std::pair<uint64_t, size_t>> m_entries;
};

/// Calls `take` with the name of each entry that is a number, until it returns false. The C
/// library's reader would allocate 32 KiB for each folder. Returns how many there were.
template <class Take>
int eachNumber(int folder, Take take)
{
    alignas(dirent64) std::array<char, 16384> buffer;
    int count = 0;
    for (;;) {
        const long size = syscall(SYS_getdents64, folder, buffer.data(), buffer.size());
        if (size <= 0)
            return count;
        for (long offset = 0; offset < size;) {
            const char *const entry = buffer.data() + offset;
            unsigned short length = 0;
            memcpy(&length, entry + offsetof(dirent64, d_reclen), sizeof length);
            offset += length;
            const char *const name = entry + offsetof(dirent64, d_name);
            if (name[0] < '0' || name[0] > '9')
                continue;
            ++count;
            if (!take(name))
                return count;
        }
    }
}

class Walk
{
public:
    explicit Walk(const std::vector<ListeningSocket> &sockets)
        : m_index(sockets), m_lastHolder(sockets.size(), npos)
    {
    }

    Scan run()
    {
        const Descriptor proc(openFolder(AT_FDCWD, "/proc"));
        if (proc.isOpen())
            eachNumber(proc.value(), [&](const char *pid) {
                visit(proc.value(), pid);
                return true;
            });
        return std::move(m_scan);
    }

private:
    enum class Visit { read, empty, folderShut, linkShut, gone };

    void visit(int proc, const char *pid)
    {
        const std::string path(pid);
        m_process = npos;
        Visit result = readFolder(proc, path, pid);
        struct stat status
        {
        };
        if ((result == Visit::folderShut || result == Visit::linkShut) &&
            fstatat(proc, pid, &status, 0) != 0)
            return;
        // Where the main thread has ended, its folder is empty, or is root's and so shut to its own
        // user: the other threads have the descriptors.
        if ((result == Visit::empty ||
             (result == Visit::folderShut && status.st_uid == m_ownUser)) &&
            hasThreads(proc, path + "/task") && readThread(proc, path + "/task", pid))
            return;
        if (result == Visit::folderShut || result == Visit::linkShut)
            m_scan.denied.push_back({number(pid), status.st_uid});
    }

    static int number(const char *digits) { return int(parseNumber(digits).value_or(0)); }

    static bool hasThreads(int proc, const std::string &path)
    {
        struct stat status;
        // ".", "..", and one for each thread.
        return fstatat(proc, path.c_str(), &status, 0) == 0 && status.st_nlink > 3;
    }

    /// Reads the descriptors through the first thread that shows them.
    bool readThread(int proc, const std::string &path, const char *pid)
    {
        const Descriptor tasks(openFolder(proc, path.c_str()));
        bool isRead = false;
        if (tasks.isOpen()) {
            eachNumber(tasks.value(), [&](const char *thread) {
                isRead = readFolder(tasks.value(), thread, pid) == Visit::read;
                return !isRead;
            });
        }
        return isRead;
    }

    /// Reads the descriptors of a process, or of a thread, in the folder `path`.
    Visit readFolder(int parent, const std::string &path, const char *pid)
    {
        const Descriptor folder(openFolder(parent, (path + "/fd").c_str()));
        if (!folder.isOpen())
            return wasRefused() ? Visit::folderShut : Visit::gone;
        bool refused = false;
        const int count = eachNumber(folder.value(), [&](const char *descriptor) {
            char link[32];
            const ssize_t size = readlinkat(folder.value(), descriptor, link, sizeof link);
            if (size < 0) {
                refused = wasRefused();
                return !refused;
            }
            if (link[0] != 's')
                return true;
            const ssize_t socket = m_index.find(socketInode({link, size_t(size)}));
            if (socket >= 0 && isKnown(folder.value(), pid))
                add(size_t(socket), number(descriptor));
            return true;
        });
        if (refused)
            return Visit::linkShut;
        return count == 0 ? Visit::empty : Visit::read;
    }

    /// The descriptors come in their order: the first one of a socket is the one that is kept.
    void add(size_t socket, int descriptor)
    {
        if (m_lastHolder[socket] == m_process)
            return;
        m_lastHolder[socket] = m_process;
        m_scan.holders.push_back({m_process, socket, descriptor});
    }

    /// Reads what is shown of the process, once, through the folder that its socket was found in:
    /// that one never turns into another process's. False where it has ended.
    bool isKnown(int descriptors, const char *pid)
    {
        if (m_process != npos)
            return true;
        struct stat status;
        if (fstatat(descriptors, "..", &status, 0) != 0)
            return false;
        m_process = m_scan.processes.size();
        m_scan.processes.push_back({number(pid), status.st_uid, commandOf(descriptors, "../")});
        return true;
    }

    static constexpr size_t npos = SIZE_MAX;
    SocketIndex m_index;
    uint32_t m_ownUser = geteuid();
    Scan m_scan;
    size_t m_process = npos;          ///< the one that is visited, once it is known
    std::vector<size_t> m_lastHolder; ///< of each socket
};

} // namespace

Scan findHolders(const std::vector<ListeningSocket> &sockets)
{
    return sockets.empty() ? Scan() : Walk(sockets).run();
}

std::string commandOf(int folder, std::string_view prefix)
{
    const std::string exe = std::string(prefix) + "exe";
    std::string executable;
    const bool isReadable = readLink(folder, exe.c_str(), executable);
    if (isReadable && !executable.ends_with(')')) {
        // Nearly always: what it was started with adds nothing.
        std::string name = programName(executable, true, {});
        if (isKnownName(name))
            return name;
    }

    std::string commandLine;
    std::string comm;
    readFile(folder, (std::string(prefix) + "cmdline").c_str(), commandLine, commandLineLimit);
    readFile(folder, (std::string(prefix) + "comm").c_str(), comm);
    if (comm.ends_with('\n'))
        comm.pop_back();
    const auto arguments = splitArguments(commandLine);
    std::string name;
    if (!isReadable) {
        name = hiddenProgramName(arguments, comm);
    } else {
        std::string_view path = executable;
        const bool isReallyThere =
            stripDeleted(path) && isSameFile(folder, exe.c_str(), AT_FDCWD, executable.c_str());
        name = programName(executable, isReallyThere, arguments);
        // One file may have several names, and Debian's redis-server is a link to another one. A
        // name is believed only beside the executable, and only for the very same file.
        const std::string_view first = arguments.empty() ? std::string_view() : arguments[0];
        for (const std::string_view other : {first, firstWord(first), std::string_view(comm)}) {
            const std::string alias(baseName(other));
            const std::string place = executable.substr(0, executable.rfind('/') + 1) + alias;
            if (!isKnownName(name) && isKnownName(foldName(alias)) &&
                isSameFile(folder, exe.c_str(), AT_FDCWD, place.c_str()))
                name = foldName(alias);
        }
    }
    if (name.empty())
        name = comm.empty() ? "?" : comm;
    // No file's name is longer, but what a process calls itself may be.
    name.resize(std::min<size_t>(name.size(), NAME_MAX));
    return name;
}

const ProcessTree::Node *ProcessTree::node(int pid)
{
    const auto known = m_nodes.find(pid);
    if (known != m_nodes.end())
        return &known->second;
    std::string text;
    if (!readFile(AT_FDCWD, ("/proc/" + std::to_string(pid) + "/stat").c_str(), text))
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

void sortByAncestry(Scan &scan, const std::vector<ListeningSocket> &sockets)
{
    struct Age
    {
        uint64_t startTime = 0;
        int depth =
            0; ///< a parent and its child may have started in the same hundredth of a second
    };
    std::vector<Age> ages(scan.processes.size());
    std::map<uint16_t, size_t> firstOfPort;
    ProcessTree tree;
    const auto measure = [&](size_t process) {
        const int pid = scan.processes[process].pid;
        const ProcessTree::Node *const node = tree.node(pid);
        // One that has ended meanwhile is nobody's server: it comes last.
        ages[process] =
            node == nullptr ? Age{UINT64_MAX, 0} : Age{node->startTime, tree.depth(pid)};
    };
    for (const Holder &holder : scan.holders) {
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
        return std::tuple(socket.port, age.startTime, age.depth, scan.processes[holder.process].pid,
                          holder.descriptor, socket.inode);
    };
    std::sort(scan.holders.begin(), scan.holders.end(),
              [&key](const Holder &a, const Holder &b) { return key(a) < key(b); });
}

} // namespace tidewick::tools
