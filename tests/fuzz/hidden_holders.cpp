// A /proc and a tree of cgroups that are made up of the input, in a directory in memory: whose
// listeners does our lsof show? Each byte decides one fact of a process or of a socket.

#include "libexec/holders/Attribution.h"
#include "libexec/holders/Holders.h"
#include "libexec/holders/RowOrder.h"
#include "libexec/names/CommandName.h"
#include "libexec/proc/Descriptor.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/MemoryDirectory.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace tidewick::libexec;

namespace
{

namespace files = std::filesystem;

/// The bytes of the input, and zeros behind them.
class Facts
{
public:
    Facts(const uint8_t *data, size_t size) : m_data(data), m_size(size) {}
    unsigned below(unsigned limit) { return next() % limit; }
    bool isEnd() const { return m_at >= m_size; }

private:
    uint8_t next() { return m_at < m_size ? m_data[m_at++] : 0; }

    const uint8_t *m_data;
    size_t m_size;
    size_t m_at = 0;
};

constexpr unsigned groupCount = 3;

struct FakeProcess
{
    uint32_t user = 0;
    uint64_t cgroup = 0; ///< 0: not known
    bool isHidden = false;
    bool isHere = false; ///< in our network namespace
    std::string comm;
    std::vector<unsigned> sockets; ///< that its descriptors name
};

class FakeSystem
{
public:
    explicit FakeSystem(Facts &facts)
    {
        m_hasCgroups = facts.below(8) != 7;
        write("proc/self/net/tcp", "");
        write("elsewhere", "");
        for (unsigned group = 0; group < groupCount; ++group)
            files::create_directories(m_root / "cgroup" / name(group));
        const unsigned sockets = 1 + facts.below(4);
        for (unsigned i = 0; i < sockets; ++i)
            addSocket(facts, i);
        const unsigned processes = 1 + facts.below(6);
        for (unsigned i = 0; i < processes; ++i)
            addProcess(facts, int(2 + i));
    }

    files::path proc() const { return m_root / "proc"; }
    bool hasCgroups() const { return m_hasCgroups; }
    files::path cgroups() const { return m_root / "cgroup"; }
    const std::vector<ListeningSocket> &sockets() const { return m_sockets; }
    const std::map<int, FakeProcess> &processes() const { return m_processes; }

    /// What a walk cannot be made to find: root may read every directory.
    std::vector<DeniedProcess> denied() const
    {
        std::vector<DeniedProcess> list;
        for (const auto &[pid, process] : m_processes) {
            if (process.isHidden)
                list.push_back({pid, process.user});
        }
        return list;
    }

private:
    static std::string name(unsigned group)
    {
        return group == 0 ? "" : "g" + std::to_string(group);
    }

    static uint32_t anyUser(Facts &facts)
    {
        constexpr std::array<uint32_t, 5> users{0, 983, 984, 1000, 65534};
        return users[facts.below(users.size())];
    }

    void write(const files::path &path, const std::string &text) const
    {
        files::create_directories((m_root / path).parent_path());
        std::ofstream(m_root / path, std::ios::binary) << text;
    }

    uint64_t idOf(unsigned group) const
    {
        struct stat status;
        return stat((m_root / "cgroup" / name(group)).c_str(), &status) == 0 ? status.st_ino : 0;
    }

    void addSocket(Facts &facts, unsigned index)
    {
        ListeningSocket socket;
        socket.inode = facts.below(8) == 0 ? 0 : 100 + index;
        socket.port = uint16_t(8080 + facts.below(2));
        socket.user = anyUser(facts);
        const unsigned group = facts.below(groupCount + 1);
        socket.cgroup = group == groupCount ? 0 : idOf(group);
        socket.isIpv6 = facts.below(2) == 1;
        m_sockets.push_back(socket);
    }

    void addProcess(Facts &facts, int pid)
    {
        constexpr std::array<const char *, 5> names{"docker-proxy", "postgres", "mongod", "sh",
                                                    "MainThread"};
        FakeProcess process;
        const files::path directory = files::path("proc") / std::to_string(pid);
        process.comm = names[facts.below(names.size())];
        process.isHidden = facts.below(4) != 0;
        process.isHere = facts.below(4) != 0;
        const uint32_t user = anyUser(facts);
        write(directory / "comm", process.comm + '\n');
        write(directory / "stat", std::to_string(pid) + " (" + process.comm + ") S " +
                                      std::to_string(facts.below(unsigned(pid))) +
                                      " 0 0 0 0 0 0 0 0 0 3 1 0 0 20 0 1 0 " +
                                      std::to_string(facts.below(4)) + " 1\n");
        const std::string real = std::to_string(facts.below(4) == 0 ? 1000 : user);
        write(directory / "status",
              "Uid:\t" + real + '\t' + std::to_string(user) + "\t0\t0\nVmRSS:\t1 kB\n");
        const std::string port = std::to_string(8080 + facts.below(2));
        using namespace std::string_literals;
        write(directory / "cmdline",
              process.comm + "\0-proto\0tcp\0-host-ip\0000.0.0.0\0-host-port\0"s + port + '\0');
        const unsigned group = facts.below(groupCount + 1);
        if (group < groupCount) {
            process.cgroup = m_hasCgroups ? idOf(group) : 0;
            write(directory / "cgroup", "1:cpu:/g1\n0::/" + name(group) + '\n');
        }
        files::create_directories(m_root / directory / "net");
        files::create_hard_link(m_root / (process.isHere ? "proc/self/net/tcp" : "elsewhere"),
                                m_root / directory / "net/tcp");
        files::create_directories(m_root / directory / "fd");
        const unsigned descriptors = process.isHidden ? 0 : facts.below(4);
        for (unsigned i = 0; i < descriptors; ++i) {
            const unsigned socket = facts.below(6);
            process.sockets.push_back(socket);
            files::create_symlink("socket:[" + std::to_string(100 + socket) + ']',
                                  m_root / directory / "fd" / std::to_string(i));
        }
        // Only root can make another user's directory; else all processes are ours.
        process.user = chown((m_root / directory).c_str(), user, user) == 0 ? user : geteuid();
        m_processes[pid] = process;
    }

    MemoryDirectory m_directory;
    const files::path m_root = m_directory.path();
    bool m_hasCgroups = true;
    std::vector<ListeningSocket> m_sockets;
    std::map<int, FakeProcess> m_processes;
};

void checkInferred(const FakeSystem &system, const ListeningSocket &socket, int pid)
{
    const FakeProcess &process = system.processes().at(pid);
    promise(process.user == socket.user, "an inferred holder is the socket's user's");
    promise(socket.user <= 999, "what another person runs is not listed");
    promise(process.isHidden && process.isHere, "a holder is hidden, and in our network");
    promise(process.cgroup == 0 || socket.cgroup == 0 || process.cgroup == socket.cgroup,
            "a holder is in the socket's cgroup");
    promise(socket.inode != 0, "a socket without an inode has no holder");
    int others = 0;
    for (const auto &[other, facts] : system.processes())
        others +=
            other != pid && facts.user == process.user && facts.isHidden && facts.isHere &&
                    (facts.cgroup == 0 || socket.cgroup == 0 || facts.cgroup == socket.cgroup) &&
                    facts.comm != process.comm
                ? 1
                : 0;
    promise(others == 0 || process.comm == "docker-proxy" || process.user == 0,
            "where another one may hold it, there is no holder");
}

void checkRows(const FakeSystem &system, const SocketHolders &found)
{
    std::set<std::pair<size_t, size_t>> rows;
    std::map<size_t, int> inferred;
    std::set<size_t> seen;
    for (const Holder &holder : found.holders) {
        const ListeningSocket &socket = system.sockets().at(holder.socket);
        const int pid = found.processes.at(holder.process).pid;
        promise(rows.insert({holder.process, holder.socket}).second,
                "a process has one row for a socket");
        promise(found.processes[holder.process].user == system.processes().at(pid).user,
                "a row has its process's user");
        if (isInferred(holder)) {
            promise(++inferred[holder.socket] == 1, "a socket has one inferred row");
            checkInferred(system, socket, pid);
        } else {
            const auto &names = system.processes().at(pid).sockets;
            promise(std::any_of(names.begin(), names.end(),
                                [&](unsigned each) { return 100 + each == socket.inode; }),
                    "a holder that was seen has the socket");
            seen.insert(holder.socket);
        }
    }
    for (const auto &[socket, count] : inferred)
        promise(!seen.contains(socket), "nothing is inferred for a socket that was seen");
}

void checkOrder(const FakeSystem &system, const SocketHolders &found, uint32_t viewer)
{
    for (size_t i = 1; i < found.holders.size(); ++i) {
        const Holder &before = found.holders[i - 1];
        const Holder &after = found.holders[i];
        if (system.sockets()[before.socket].port != system.sockets()[after.socket].port)
            continue;
        promise(isInferred(before) <= isInferred(after), "holders that were seen come first");
        if (isInferred(before) == isInferred(after))
            promise((found.processes[before.process].user != viewer) <=
                        (found.processes[after.process].user != viewer),
                    "one's own come before others'");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Facts facts(data, size);
    const FakeSystem system(facts);
    const Descriptor proc(openDirectory(AT_FDCWD, system.proc().c_str()));
    const Descriptor cgroups(system.hasCgroups() ? openDirectory(AT_FDCWD, system.cgroups().c_str())
                                                 : -1);
    SocketHolders found = findHolders(proc.value(), system.sockets());
    found.denied = system.denied();
    attributeHidden(found, system.sockets(), proc.value(), cgroups.value());
    checkRows(system, found);
    sortRows(found, system.sockets(), proc.value(), 1000);
    checkRows(system, found);
    checkOrder(system, found, 1000);
    return 0;
}
