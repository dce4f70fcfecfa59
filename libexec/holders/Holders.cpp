#include "libexec/holders/Holders.h"

#include "libexec/names/CommandName.h"
#include "libexec/proc/Descriptor.h"
#include "libexec/proc/ProcFiles.h"
#include "libexec/proc/Words.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tidewick::libexec
{
namespace
{

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
/// library's reader would allocate 32 KiB for each directory. Returns how many there were.
template <class Take>
int eachNumber(int directory, Take take)
{
    alignas(dirent64) std::array<char, 16384> buffer;
    int count = 0;
    for (;;) {
        const long size = syscall(SYS_getdents64, directory, buffer.data(), buffer.size());
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
    Walk(int proc, const std::vector<ListeningSocket> &sockets)
        : m_proc(proc), m_index(sockets), m_lastHolder(sockets.size(), npos)
    {
    }

    SocketHolders run()
    {
        eachNumber(m_proc, [&](const char *pid) {
            visit(pid);
            return true;
        });
        return std::move(m_found);
    }

private:
    enum class Visit { read, empty, directoryShut, linkShut, gone };

    void visit(const char *pid)
    {
        const std::string path(pid);
        m_process = npos;
        Visit result = readDirectory(m_proc, path, pid);
        struct stat status
        {
        };
        if ((result == Visit::directoryShut || result == Visit::linkShut) &&
            fstatat(m_proc, pid, &status, 0) != 0)
            return;
        // Where the main thread has ended, its directory is empty, or is root's and so shut to its
        // own user: the other threads have the descriptors.
        if ((result == Visit::empty ||
             (result == Visit::directoryShut && status.st_uid == m_ownUser)) &&
            hasThreads(path + "/task") && readThread(path + "/task", pid))
            return;
        if (result == Visit::directoryShut || result == Visit::linkShut)
            m_found.denied.push_back({number(pid), status.st_uid});
    }

    static int number(const char *digits) { return int(parseNumber(digits).value_or(0)); }

    bool hasThreads(const std::string &path) const
    {
        struct stat status;
        // ".", "..", and one for each thread.
        return fstatat(m_proc, path.c_str(), &status, 0) == 0 && status.st_nlink > 3;
    }

    /// Reads the descriptors through the first thread that shows them.
    bool readThread(const std::string &path, const char *pid)
    {
        const Descriptor tasks(openDirectory(m_proc, path.c_str()));
        bool isRead = false;
        if (tasks.isOpen()) {
            eachNumber(tasks.value(), [&](const char *thread) {
                isRead = readDirectory(tasks.value(), thread, pid) == Visit::read;
                return !isRead;
            });
        }
        return isRead;
    }

    /// Reads the descriptors of a process, or of a thread, in the directory `path`.
    Visit readDirectory(int parent, const std::string &path, const char *pid)
    {
        const Descriptor directory(openDirectory(parent, (path + "/fd").c_str()));
        if (!directory.isOpen())
            return wasRefused() ? Visit::directoryShut : Visit::gone;
        bool refused = false;
        const int count = eachNumber(directory.value(), [&](const char *descriptor) {
            char link[32];
            const ssize_t size = readlinkat(directory.value(), descriptor, link, sizeof link);
            if (size < 0) {
                refused = wasRefused();
                return !refused;
            }
            if (link[0] != 's')
                return true;
            const ssize_t socket = m_index.find(socketInode({link, size_t(size)}));
            if (socket >= 0 && isKnown(directory.value(), pid))
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
        m_found.holders.push_back({m_process, socket, descriptor});
    }

    /// Reads what is shown of the process, once, through the directory that its socket was found
    /// in: that one never turns into another process's. False where it has ended.
    bool isKnown(int descriptors, const char *pid)
    {
        if (m_process != npos)
            return true;
        struct stat status;
        if (fstatat(descriptors, "..", &status, 0) != 0)
            return false;
        m_process = m_found.processes.size();
        m_found.processes.push_back({number(pid), status.st_uid, commandOf(descriptors, "../")});
        return true;
    }

    static constexpr size_t npos = SIZE_MAX;
    int m_proc;
    SocketIndex m_index;
    uint32_t m_ownUser = geteuid();
    SocketHolders m_found;
    size_t m_process = npos;          ///< the one that is visited, once it is known
    std::vector<size_t> m_lastHolder; ///< of each socket
};

} // namespace

SocketHolders findHolders(int proc, const std::vector<ListeningSocket> &sockets)
{
    return sockets.empty() ? SocketHolders() : Walk(proc, sockets).run();
}

} // namespace tidewick::libexec
