#include "libexec/holders/Attribution.h"
#include "libexec/proc/Descriptor.h"
#include "products/Users.h"
#include "tests/libexec/FakeProc.h"
#include "tests/libexec/SocketOn.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace tidewick::libexec;
namespace fs = std::filesystem;

namespace
{

constexpr uint32_t service = 105;

/// What everybody may read of a process.
struct Shown
{
    int pid = 0;
    int parent = 1;
    std::string comm = "server";
    uint32_t user = service;
    std::string cgroup = "a.service"; ///< below the root; none where it is "-"
    bool isInOurNetwork = true;
    std::string arguments = "server"; ///< with NULs
    std::string ids = "0\t0\t0\t0";
};

/// A directory like /proc and one like the tree of cgroups, with processes whose descriptors are
/// shut.
class AttributionTest : public testing::Test
{
protected:
    void SetUp() override
    {
        write(proc / "self/net/tcp", "");
        if (chown((proc / "self").c_str(), service, service) != 0)
            GTEST_SKIP() << "only root can make directories of other users";
        fs::create_directories(cgroups / "a.service");
        fs::create_directories(cgroups / "b.service");
    }

    void start(const Shown &process)
    {
        const fs::path place = proc / std::to_string(process.pid);
        writeStat(proc, process.pid, process.parent, process.comm);
        write(place / "comm", process.comm + '\n');
        write(place / "cmdline", process.arguments);
        write(place / "status", "Uid:\t" + process.ids + '\n');
        if (process.cgroup != "-")
            write(place / "cgroup", "0::/" + process.cgroup + '\n');
        fs::create_directories(place / "net");
        if (process.isInOurNetwork)
            fs::create_hard_link(proc / "self/net/tcp", place / "net/tcp");
        else
            write(place / "net/tcp", "");
        EXPECT_EQ(chown(place.c_str(), process.user, process.user), 0);
        found.denied.push_back({process.pid, process.user});
    }
    void startProxy(int pid, const char *address, const std::string &cgroup = "a.service")
    {
        start(proxy(pid, address, cgroup));
    }
    static Shown proxy(int pid, const char *address, const std::string &cgroup = "a.service")
    {
        using namespace std::string_literals;
        return {pid,
                1,
                "docker-proxy",
                0,
                cgroup,
                true,
                "p\0-proto\0tcp\0-host-ip\0"s + address + "\0-host-port\0008080\0"s};
    }

    /// A socket of a user that was made in a cgroup, in none where it is "-".
    ListeningSocket socket(const char *cgroup, uint32_t user = service) const
    {
        ListeningSocket listening = socketOn("127.0.0.1", 8080);
        listening.inode = 77;
        listening.user = user;
        struct stat status = {};
        if (*cgroup != '-') {
            EXPECT_EQ(stat((cgroups / cgroup).c_str(), &status), 0);
            listening.cgroup = status.st_ino;
        }
        return listening;
    }

    /// The process that the only socket is attributed to; 0 where it is none.
    int holderOf(const ListeningSocket &listening)
    {
        SocketHolders result = found;
        const Descriptor ofProc(openDirectory(AT_FDCWD, proc.c_str()));
        const Descriptor ofCgroups(openDirectory(AT_FDCWD, cgroups.c_str()));
        attributeHidden(result, {listening}, ofProc.value(), ofCgroups.value());
        if (result.holders.empty())
            return 0;
        EXPECT_TRUE(isInferred(result.holders[0]));
        EXPECT_EQ(result.processes.at(result.holders[0].process).user, listening.user);
        return result.processes[result.holders[0].process].pid;
    }

    QTemporaryDir home;
    fs::path proc = fs::path(home.path().toStdString()) / "proc";
    fs::path cgroups = fs::path(home.path().toStdString()) / "cgroups";
    SocketHolders found;
};

} // namespace

TEST_F(AttributionTest, theOnlyProcessOfAServicesUserHoldsItsSocket)
{
    start({7});
    EXPECT_EQ(holderOf(socket("a.service")), 7);
    EXPECT_EQ(holderOf(socket("a.service", service + 1)), 0);
}

TEST_F(AttributionTest, theFirstProcessOfAContainerMayBeTheHolder)
{
    start({1, 0});
    EXPECT_EQ(holderOf(socket("a.service")), 1);
}

TEST_F(AttributionTest, aProcessWithoutANameIsShownAsAQuestionMark)
{
    start({7, 1, ""});
    const Descriptor ofProc(openDirectory(AT_FDCWD, proc.c_str()));
    attributeHidden(found, {socket("-")}, ofProc.value(), -1);
    ASSERT_EQ(found.processes.size(), 1U);
    EXPECT_EQ(found.processes[0].command, "?");
}

TEST_F(AttributionTest, withoutCgroupsTheOnlyProcessOfTheUserHoldsTheSocket)
{
    start({7});
    fs::remove_all(cgroups);
    ListeningSocket listening = socket("-");
    listening.cgroup = 5;
    EXPECT_EQ(holderOf(listening), 7);
}

TEST_F(AttributionTest, aHundredGenerationsAreFollowed)
{
    const int oldest = 7;
    start({oldest, 1, "nginx"});
    for (int pid = oldest + 1; pid < oldest + 100; ++pid)
        writeStat(proc, pid, pid - 1);
    start({oldest + 100, oldest + 99, "nginx"});
    EXPECT_EQ(holderOf(socket("a.service")), oldest);
    found.denied.pop_back();
    writeStat(proc, oldest + 100, oldest + 99);
    start({oldest + 101, oldest + 100, "nginx"});
    EXPECT_EQ(holderOf(socket("a.service")), 0);
}

TEST_F(AttributionTest, aSocketThatSomebodyWasSeenToHoldIsNotHisToo)
{
    start({7});
    found.processes = {{9, service, "seen"}};
    found.holders = {{0, 0, 3}};
    const Descriptor ofProc(openDirectory(AT_FDCWD, proc.c_str()));
    attributeHidden(found, {socket("-")}, ofProc.value(), -1);
    EXPECT_EQ(found.holders.size(), 1U);
}

TEST_F(AttributionTest, aSocketWithoutAnInodeHasNoHolder)
{
    start({7});
    ListeningSocket listening = socket("a.service");
    for (const auto &[inode, holder] : {std::pair(0U, 0), std::pair(1U, 7)}) {
        listening.inode = inode;
        EXPECT_EQ(holderOf(listening), holder) << inode;
    }
}

TEST_F(AttributionTest, onlyServicesSocketsAreAttributed)
{
    start({7, 1, "server", tidewick::lastServiceUser});
    EXPECT_EQ(holderOf(socket("a.service", tidewick::lastServiceUser)), 7);
    start({8, 1, "server", tidewick::lastServiceUser + 1});
    EXPECT_EQ(holderOf(socket("a.service", tidewick::lastServiceUser + 1)), 0);
}

TEST_F(AttributionTest, anyOfSeveralProcessesMayBeTheHolder)
{
    start({7});
    start({8, 7});
    EXPECT_EQ(holderOf(socket("a.service")), 0) << "whichever of the two it is";
}

TEST_F(AttributionTest, knownServicesHoldTheirSocketsAboveTheirWorkers)
{
    int pid = 7;
    for (const char *const comm : {"apache2", "nginx", "postgres", "redis-server", "php-fpm8.2"}) {
        found.denied.clear();
        start({pid, 1, comm});
        start({pid + 1, pid, comm});
        start({pid + 2, pid + 1, comm});
        EXPECT_EQ(holderOf(socket("a.service")), pid) << comm;
        start({pid + 3, pid, "other"});
        EXPECT_EQ(holderOf(socket("a.service")), 0) << "another program below " << comm;
        pid += 4;
    }
}

TEST_F(AttributionTest, twoServicesOfOneUserAreNotToldApart)
{
    start({7, 1, "nginx"});
    start({8, 1, "nginx"});
    EXPECT_EQ(holderOf(socket("a.service")), 0);
}

TEST_F(AttributionTest, theCgroupOfASocketTellsProcessesApart)
{
    start({7, 1, "server", service, "a.service"});
    start({8, 1, "server", service, "b.service"});
    EXPECT_EQ(holderOf(socket("a.service")), 7);
    EXPECT_EQ(holderOf(socket("b.service")), 8);
    EXPECT_EQ(holderOf(socket("-")), 0);
}

TEST_F(AttributionTest, aServicesProcessOfUnknownCgroupMayHoldAnySocketOfItsUser)
{
    for (const char *const cgroup : {"-", "gone.service"}) {
        found.denied.clear();
        start({cgroup[0], 1, "server", service, cgroup});
        EXPECT_EQ(holderOf(socket("a.service")), cgroup[0]) << cgroup;
        EXPECT_EQ(holderOf(socket("-")), cgroup[0]) << cgroup;
    }
}

TEST_F(AttributionTest, rootsProcessMustBeInTheCgroupOfItsSocket)
{
    start({7, 1, "server", 0, "a.service"});
    EXPECT_EQ(holderOf(socket("a.service", 0)), 7);
    EXPECT_EQ(holderOf(socket("b.service", 0)), 0);
    EXPECT_EQ(holderOf(socket("-", 0)), 0);
    for (const char *const cgroup : {"-", "", "gone.service"}) {
        found.denied.clear();
        start({cgroup[0] + 200, 1, "server", 0, cgroup});
        EXPECT_EQ(holderOf(socket("a.service", 0)), 0) << cgroup;
        EXPECT_EQ(holderOf(socket("-", 0)), 0) << cgroup;
        EXPECT_EQ(holderOf(socket("", 0)), 0) << cgroup << ": that cgroup is no service's";
    }
}

TEST_F(AttributionTest, aProcessInAnotherNetworkHoldsNoSocketOfOurs)
{
    start({7, 1, "server", service, "a.service", false});
    EXPECT_EQ(holderOf(socket("a.service")), 0);
}

TEST_F(AttributionTest, noProcessIsInAnUnknownNetwork)
{
    start({7, 1, "server", service, "a.service", false});
    fs::remove(proc / "7/net/tcp");
    fs::remove(proc / "self/net/tcp");
    EXPECT_EQ(holderOf(socket("a.service")), 0);
}

TEST_F(AttributionTest, anIdThatIsAnotherProcesssByNowDoesNotCount)
{
    start({7});
    EXPECT_EQ(chown((proc / "7").c_str(), service + 1, service + 1), 0);
    EXPECT_EQ(holderOf(socket("a.service")), 0);
}

TEST_F(AttributionTest, aForwarderHoldsWhereItWasToldToListen)
{
    startProxy(7, "127.0.0.1");
    startProxy(8, "127.0.0.2");
    EXPECT_EQ(holderOf(socket("-", 0)), 7);
    startProxy(9, "127.0.0.1");
    EXPECT_EQ(holderOf(socket("-", 0)), 0) << "two were told so";
}

TEST_F(AttributionTest, aForwarderToldTheExactAddressComesFirst)
{
    ListeningSocket any = socketOn("::", 8080);
    any.inode = 77;
    startProxy(7, "0.0.0.0");
    EXPECT_EQ(holderOf(any), 7);
    startProxy(8, "::");
    EXPECT_EQ(holderOf(any), 8);
}

TEST_F(AttributionTest, aForwarderInAnotherCgroupThanTheSocketIsNoHolder)
{
    startProxy(7, "127.0.0.1", "a.service");
    startProxy(8, "127.0.0.1", "b.service");
    EXPECT_EQ(holderOf(socket("b.service", 0)), 8);
}

TEST_F(AttributionTest, theOnlyForwarderInAnotherCgroupIsNoHolderEither)
{
    startProxy(7, "127.0.0.1", "a.service");
    EXPECT_EQ(holderOf(socket("b.service", 0)), 0);
}

TEST_F(AttributionTest, onlyRootsOwnDockerProxiesAreForwarders)
{
    Shown shown = proxy(7, "127.0.0.1");
    shown.comm = "impostor";
    start(shown);
    shown = proxy(8, "127.0.0.1");
    shown.ids = "1000\t0\t0\t0";
    start(shown);
    shown = proxy(9, "127.0.0.1");
    shown.isInOurNetwork = false;
    start(shown);
    EXPECT_EQ(holderOf(socket("-", 0)), 0);
}
