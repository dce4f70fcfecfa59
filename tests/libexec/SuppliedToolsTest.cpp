// The supplied lsof beside real processes, each as odd as one that was met.
#include "tests/libexec/SuppliedTools.h"
#include "tests/support/ServerProgram.h"
#include "text/EscapedPath.h"

#include <QElapsedTimer>
#include <QFile>

#include <cerrno>
#include <csignal>
#include <map>

#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

double milliseconds(const rusage &used)
{
    const auto of = [](const timeval &time) {
        return double(time.tv_sec) * 1000 + double(time.tv_usec) / 1000;
    };
    return of(used.ru_utime) + of(used.ru_stime);
}

/// A cgroup of the test's own, with others below it. It goes at the end, once it is empty.
class Cgroup
{
public:
    Cgroup()
    {
        for (const char *const root : {"/sys/fs/cgroup", "/sys/fs/cgroup/unified"}) {
            m_path = std::string(root) + "/tidewick-test-" + std::to_string(getpid());
            m_root = std::string(root) + "/cgroup.procs";
            if (access(m_root.c_str(), W_OK) == 0 && mkdir(m_path.c_str(), 0755) == 0)
                return;
        }
        m_path.clear();
    }
    ~Cgroup()
    {
        for (int i = 0; i < m_children; ++i)
            rmdir(child(i).c_str());
        for (int attempt = 0; isMade() && attempt < 500 && rmdir(m_path.c_str()) != 0; ++attempt)
            usleep(10'000);
    }
    Cgroup(const Cgroup &) = delete;
    Cgroup &operator=(const Cgroup &) = delete;

    bool isMade() const { return !m_path.empty(); }

    /// Starts a process in it as that user.
    BeforeExec inside(uid_t user) const
    {
        return [path = m_path + "/cgroup.procs", user] {
            const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
            const bool isIn = write(file, "0", 1) == 1;
            close(file);
            return isIn && asUser(user)();
        };
    }

    /// Moves a process out of it.
    bool release(pid_t pid) const
    {
        const int file = open(m_root.c_str(), O_WRONLY | O_CLOEXEC);
        const std::string text = std::to_string(pid);
        const bool isOut = write(file, text.c_str(), text.size()) == ssize_t(text.size());
        close(file);
        return isOut;
    }

    /// Makes that many below it.
    bool fill(int count)
    {
        for (; m_children < count; ++m_children) {
            if (mkdir(child(m_children).c_str(), 0755) != 0)
                return false;
        }
        return true;
    }

private:
    std::string child(int index) const { return m_path + '/' + std::to_string(index); }

    std::string m_path;
    std::string m_root;
    int m_children = 0;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(As, SuppliedTools, testing::Values(0U, strangerUser), viewerName);

TEST_P(SuppliedTools, aPlainListener)
{
    const OddProcess process({"listen 127.0.0.1", {"x"}, program("plain"), asViewer()});
    const auto list = rowsOf(process.port());
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].command, "plain");
    EXPECT_EQ(list[0].pid, process.pid());
    if (viewer() == 0 || viewer() == strangerUser) {
        EXPECT_EQ(list[0].user, viewer() == 0 ? "root" : "54321");
    }
    EXPECT_EQ(list[0].name, "127.0.0.1:" + std::to_string(process.port()));
}

TEST_P(SuppliedTools, theWholeNameWhereLsofCutsIt)
{
    EXPECT_EQ(commandOf({"", {"x"}, program("com.docker.backend")}), "com.docker.backend");
}

TEST_P(SuppliedTools, theProgramAndNotTheScript)
{
    EXPECT_EQ(commandOf({"comm flask", {"flask", "run"}, program("python3.11")}), "python3.11");
    EXPECT_EQ(commandOf({"comm MainThread", {"node"}, program("node")}), "node");
    EXPECT_EQ(commandOf({"comm next-server (v1|argv next-server (v16.4.6)",
                         {"/usr/bin/node", "some/very/long/name/of/a/script.js"},
                         program("node")}),
              "node");
}

TEST_P(SuppliedTools, forgedNames)
{
    for (const char *const name : {"node 1 root", "a\nnode 1 x", "((((", ") S 1 (", "\xff\xfe\x80",
                                   "", " ", "\\x20", "a\tb"})
        EXPECT_EQ(commandOf({std::string("comm ") + name, {"x"}, program("forger")}), "forger");
    EXPECT_EQ(commandOf({"", {"/usr/bin/node"}, program("forger")}), "forger");
    EXPECT_EQ(commandOf({"", {"/bin/node\n1 2 3 4 5 6 7 8 *:1"}, program("forger")}), "forger");
}

TEST_P(SuppliedTools, emptiedAndOverwrittenArguments)
{
    EXPECT_EQ(commandOf({"argv ", {"/usr/bin/node"}, program("blank")}), "blank");
    EXPECT_EQ(commandOf({"argv python3", {"/usr/bin/node"}, program("blank")}), "blank");
}

TEST_P(SuppliedTools, anExecutableWithBlanksInItsName)
{
    EXPECT_EQ(commandOf({"", {"x"}, program("node 1 root")}), "node\\x201\\x20root");
    EXPECT_EQ(commandOf({"", {"x"}, program("a\nb\\\xff")}), "a\\x0ab\\x5c\\xff");
}

TEST_P(SuppliedTools, aRemovedExecutable)
{
    const auto ownProgram = [this](const std::string &name) {
        std::string path = program(name);
        EXPECT_TRUE(!isRoot() || chown(path.c_str(), viewer(), viewer()) == 0);
        return path;
    };
    EXPECT_EQ(commandOf({"remove", {"x"}, ownProgram("node")}), "node");
    EXPECT_EQ(commandOf({"", {"x"}, program("node (deleted)")}), "node\\x20(deleted)");
    EXPECT_EQ(commandOf({"remove", {"x"}, ownProgram("nodejs (deleted)")}), "nodejs\\x20(deleted)");
}

TEST_P(SuppliedTools, anExecutableInMemory)
{
    const int file = memfd_create("my node", MFD_CLOEXEC);
    QFile original(QString::fromStdString(oddProgram()));
    ASSERT_TRUE(original.open(QFile::ReadOnly));
    const QByteArray bytes = original.readAll();
    ASSERT_EQ(write(file, bytes.constData(), size_t(bytes.size())), bytes.size());
    EXPECT_EQ(commandOf({"", {"x"}, "", {}, file}), "my\\x20node");
    close(file);
}

TEST_P(SuppliedTools, theLoaderStartedByHand)
{
    const char *const loader = "/lib64/ld-linux-x86-64.so.2";
    if (access(loader, X_OK) != 0)
        GTEST_SKIP() << "there is no " << loader;
    EXPECT_EQ(commandOf({"", {loader, "--inhibit-cache", program("php8")}, loader}), "php8");
}

TEST_P(SuppliedTools, anotherNameOfTheSameFileBesideIt)
{
    const std::string original = program("many-names");
    ASSERT_EQ(symlink(original.c_str(), directory().path("deno").c_str()), 0);
    EXPECT_EQ(commandOf({"", {"x"}, directory().path("deno")}), "deno");
    EXPECT_EQ(commandOf({"comm deno", {"x"}, original}), "deno");
    EXPECT_EQ(commandOf({"comm postgres", {"x"}, original}), "many-names");
    program("mongod");
    EXPECT_EQ(commandOf({"comm mongod", {"x"}, original}), "many-names");
    EXPECT_EQ(commandOf({"comm ../bin/node", {"x"}, original}), "many-names");
    EXPECT_EQ(commandOf({"", {"redis-server *:6379"}, program("redis-check-rdb")}), "redis-server");
}

TEST_P(SuppliedTools, anEndedMainThread)
{
    EXPECT_EQ(commandOf({"exit-main", {"x"}, program("deno")}), "deno");
}

TEST_P(SuppliedTools, fiveForkedHoldersTheOldestFirst)
{
    const OddProcess process({"listen 127.0.0.1|fork 4", {"x"}, "", asViewer()});
    const auto list = rowsOf(process.port());
    ASSERT_EQ(list.size(), 5U);
    EXPECT_EQ(list[0].pid, process.pid());
}

TEST_P(SuppliedTools, oneRowForAProcessAndItsSocket)
{
    const OddProcess process(
        {"listen 127.0.0.1|again 500|fork 1|listen ::1|again 500", {"x"}, "", asViewer()});
    ASSERT_TRUE(process.isUp());
    const auto list = rowsOf(process.port());
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(list[0].pid, process.pid());
    EXPECT_EQ(list[1].pid, process.pid());
    EXPECT_NE(list[2].pid, process.pid());
    // Each time the first descriptor, below or just above the 500 copies of the first socket.
    for (const Row &row : list) {
        const int above = row.name.starts_with('[') ? 500 : 0;
        EXPECT_GT(std::stoi(row.descriptor), above);
        EXPECT_LT(std::stoi(row.descriptor), above + 100);
    }
}

TEST_P(SuppliedTools, bothWildcardsOnOnePort)
{
    const OddProcess process({"listen 0.0.0.0|listen ::", {"x"}, "", asViewer()});
    ASSERT_EQ(process.port(0), process.port(1));
    const auto list = rowsOf(process.port());
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].name, "*:" + std::to_string(process.port()));
    EXPECT_EQ(list[1].name, list[0].name);
    EXPECT_EQ(list[1].pid, process.pid());
}

TEST_P(SuppliedTools, onePortSharedByTwo)
{
    const OddProcess first(
        {"reuseport|listen 127.0.0.1|fork 1|listen 127.0.0.1", {"x"}, "", asViewer()});
    const std::string port = std::to_string(first.port());
    const OddProcess second(
        {"reuseport|port " + port + "|listen 127.0.0.1", {"x"}, "", asViewer()});
    const auto list = rowsOf(first.port());
    ASSERT_EQ(list.size(), 4U);
    EXPECT_EQ(list[0].pid, first.pid());
    EXPECT_EQ(list[1].pid, first.pid());
    EXPECT_NE(list[2].pid, list[3].pid);
    EXPECT_TRUE(list[2].pid == second.pid() || list[3].pid == second.pid());
}

TEST_P(SuppliedTools, otherLoopbackAddresses)
{
    const OddProcess process({"listen 127.0.0.2|listen ::1", {"x"}, "", asViewer()});
    const auto list = rowsOf(process.port());
    const std::string port = ':' + std::to_string(process.port());
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].name, "127.0.0.2" + port);
    EXPECT_EQ(list[1].name, "[::1]" + port);
}

TEST_P(SuppliedTools, anotherNetworkIsAbsent)
{
    NEEDS_ROOT("make a network");
    const auto before = [this] {
        return unshare(CLONE_NEWNET) == 0 && asViewer()();
    };
    const OddProcess process({"listen 0.0.0.0", {"x"}, "", before});
    if (!process.isUp())
        GTEST_SKIP() << "a network of its own may not be made here";
    EXPECT_TRUE(rowsOf(process.port()).empty());
}

TEST_P(SuppliedTools, aProcessThatShutsItsDescriptors)
{
    const OddProcess silent({"listen 127.0.0.1|shut", {"x"}, program("shut"), asViewer()});
    const auto list = rowsOf(silent.port());
    ASSERT_EQ(list.size(), viewer() == 0 ? 1U : 0U);
    if (viewer() == 0) {
        EXPECT_EQ(list[0].command, "shut");
    }
}

TEST_P(SuppliedTools, lessOfProcThanThereIs)
{
    NEEDS_ROOT("mount another /proc");
    const OddProcess own({"listen 127.0.0.1", {"x"}, "", asViewer()});
    const OddProcess hidden({"listen 127.0.0.1", {"x"}, "", asUser(983)});
    bool mayMount = true;
    const auto before = [this] {
        return unshare(CLONE_NEWNS) == 0 &&
               mount("none", "/", nullptr, MS_REC | MS_PRIVATE, "") == 0 &&
               mount("proc", "/proc", "proc", 0, "hidepid=2") == 0 && asViewer()();
    };
    mayMount = runProgram("/bin/true", {}, before).status == 0;
    if (!mayMount)
        GTEST_SKIP() << "/proc may not be mounted here";
    const auto list = rowsOf(own.port(), before);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].pid, own.pid());
    EXPECT_EQ(rowsOf(hidden.port(), before).size(), viewer() == 0 ? 1U : 0U);
}

TEST_P(SuppliedTools, processesThatEndMidScan)
{
    std::multimap<int, pid_t> known;
    std::vector<Row> seen;
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK), 0);
    std::vector<pid_t> pids;
    const std::string churn = program("churn");
    for (int i = 0; i < 3; ++i) {
        const pid_t pid = fork();
        if (pid == 0) {
            const char *const environment[] = {"ODD=churn", nullptr};
            if (dup2(ends[1], STDOUT_FILENO) < 0 || !asViewer()())
                _exit(1);
            execle(churn.c_str(), "x", nullptr, environment);
            _exit(1);
        }
        // As a target of a kill a -1 would be every process there is.
        ASSERT_GT(pid, 0);
        pids.push_back(pid);
    }
    const auto take = [&] {
        std::string text;
        std::array<char, 65536> buffer;
        for (ssize_t count = 0; (count = read(ends[0], buffer.data(), buffer.size())) > 0;)
            text.append(buffer.data(), size_t(count));
        for (const std::string &line : lines(text)) {
            const auto pair = words(line);
            if (pair.size() == 2)
                known.emplace(std::stoi(pair[0]), std::stoi(pair[1]));
        }
    };
    const auto saysOf = [&known](const Row &row) {
        return known.equal_range(std::stoi(row.name.substr(row.name.find(':') + 1)));
    };
    const auto isKnown = [&saysOf](const Row &row) {
        const auto [first, last] = saysOf(row);
        return first != last;
    };
    // On a loaded machine most of them end before a scan can tell whose they are.
    QElapsedTimer timer;
    timer.start();
    const auto isEnough = [&](int scans) {
        if (std::none_of(seen.begin(), seen.end(), isKnown))
            return timer.elapsed() > 60'000;
        return scans >= load(50, 200) || timer.elapsed() > 20'000;
    };
    for (int scans = 0; !isEnough(scans); ++scans) {
        for (const Row &row : rows(asViewer()))
            seen.push_back(row);
        take();
    }
    for (const pid_t pid : pids) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    take();
    std::erase_if(seen, [&isKnown](const Row &row) { return !isKnown(row); });
    EXPECT_FALSE(seen.empty());
    for (const Row &row : seen) {
        const auto [first, last] = saysOf(row);
        EXPECT_TRUE(
            std::any_of(first, last, [&](const auto &pair) { return pair.second == row.pid; }))
            << row.name << ' ' << row.pid;
    }
}

TEST_P(SuppliedTools, twentyThousandDescriptors)
{
    OddProcess process({"listen 127.0.0.1|fds 20000", {"x"}, "", asViewer()});
    ASSERT_TRUE(process.isUp());
    RecordProperty("descriptors", process.port(1));
    const auto list = rowsOf(process.port(0));
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].pid, process.pid());
}

TEST_P(SuppliedTools, thousandsOfProcesses)
{
    const int processes = load(2000, 10'000);
    const OddProcess crowd({"idle " + std::to_string(processes), {"x"}, "", asViewer()});
    if (!crowd.isUp())
        GTEST_SKIP() << "so many processes may not be started here";
    const OddProcess process({"listen 127.0.0.1", {"x"}, "", asViewer()});
    const auto list = rowsOf(process.port());
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].pid, process.pid());
}

TEST_P(SuppliedTools, lessThanFourMegabytes)
{
    if (isSanitized)
        GTEST_SKIP() << "the sanitizers need more";
    const OddProcess crowd({"listen 127.0.0.1|fork 1000", {"x"}, "", asViewer()});
    expectLessThanFourMegabytes(lsof() + " -i TCP -P -n -sTCP:LISTEN", asViewer());
}

TEST_P(SuppliedTools, theSameOutputManyTimes)
{
    if (!ownNetwork())
        GTEST_SKIP() << "others' listeners come and go";
    const OddProcess first({"reuseport|listen 127.0.0.1|fork 5", {"x"}, "", asViewer()});
    const OddProcess second({"listen 0.0.0.0|listen ::|fork 3", {"x"}, "", asViewer()});
    const std::string expected = runProgram(lsof(), listing, asViewer()).text;
    EXPECT_EQ(lines(expected).size(), 1U + 6 + 8);
    for (int run = 0; run < load(100, 1000); ++run)
        ASSERT_EQ(runProgram(lsof(), listing, asViewer()).text, expected);
}

TEST_P(SuppliedTools, whatLsofPrintsWhereLsofIsRight)
{
    if (!ownNetwork())
        GTEST_SKIP() << "others' listeners come and go";
    for (const char *const script :
         {"listen 127.0.0.1|listen ::1|listen 127.0.0.2", "listen 0.0.0.0|listen ::"}) {
        const OddProcess process({script, {"x"}, program("short"), asViewer()});
        const auto expected = lines(runProgram("/usr/bin/lsof", listing, asViewer()).text);
        const auto printed = lines(runProgram(lsof(), listing, asViewer()).text);
        EXPECT_GE(expected.size(), 3U);
        ASSERT_EQ(printed.size(), expected.size());
        // How wide a column is differs from one release of lsof to the next.
        for (size_t line = 0; line < expected.size(); ++line)
            EXPECT_EQ(words(printed[line]), words(expected[line]));
    }
}

TEST_P(SuppliedTools, nothingToList)
{
    if (!ownNetwork())
        GTEST_SKIP() << "others' listeners come and go";
    const Output output = runProgram(lsof(), listing, asViewer());
    EXPECT_EQ(output.text, "");
    EXPECT_EQ(output.errors, "");
    EXPECT_EQ(output.status, 1);
}

TEST_P(SuppliedTools, dockersForwardersOfAnotherUser)
{
    NEEDS_ROOT("be another user");
    const std::string proxy = program("docker-proxy");
    const auto start = [&](const std::string &host, const std::string &address, int port) {
        return std::make_unique<OddProcess>(OddProcess::Settings{
            "port " + std::to_string(port) + "|listen " + address,
            {proxy, "-proto", "tcp", "-host-ip", host, "-host-port", std::to_string(port)},
            proxy,
            {}});
    };
    const int port = freePort();
    const auto own = start("127.0.0.1", "127.0.0.1", port);
    ASSERT_TRUE(own->isUp());
    auto list = rowsOf(port);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].command, "docker-proxy");
    EXPECT_EQ(list[0].pid, own->pid());
    EXPECT_EQ(list[0].user, "root");
    if (viewer() == 0)
        return;
    EXPECT_EQ(list[0].descriptor, "NOFD");
    // One that says the same, and holds nothing.
    const OddProcess forger(
        {"",
         {proxy, "-proto", "tcp", "-host-ip", "127.0.0.1", "-host-port", std::to_string(port)},
         proxy,
         {}});
    EXPECT_TRUE(rowsOf(port).empty());
    // One that is not root's says what it likes.
    const OddProcess stranger({"listen 127.0.0.3", {proxy}, proxy, asUser(983)});
    EXPECT_TRUE(rowsOf(stranger.port()).empty() ||
                rowsOf(stranger.port())[0].pid == stranger.pid());
}

TEST_P(SuppliedTools, aForwarderInAnotherNetworkHoldsNothingHere)
{
    NEEDS_ROOT("make a network");
    const OddProcess holder({"listen 127.0.0.1", {"x"}, "", asUser(0)});
    const std::string proxy = program("docker-proxy");
    const OddProcess elsewhere({"",
                                {proxy, "-proto", "tcp", "-host-ip", "127.0.0.1", "-host-port",
                                 std::to_string(holder.port())},
                                proxy,
                                [] {
                                    return unshare(CLONE_NEWNET) == 0;
                                }});
    if (!elsewhere.isUp())
        GTEST_SKIP() << "a network of its own may not be made here";
    for (const Row &row : rowsOf(holder.port()))
        EXPECT_EQ(row.pid, holder.pid());
}

TEST_P(SuppliedTools, aServiceOfAnotherUser)
{
    NEEDS_ROOT("be another user");
    const std::string service = program("postgres");
    const OddProcess own(
        {"listen 127.0.0.1|fork 3", {service, "-D", "data"}, service, asUser(983)});
    auto list = rowsOf(own.port());
    ASSERT_EQ(list.size(), viewer() == 0 ? 4U : 1U);
    EXPECT_EQ(list[0].command, "postgres");
    EXPECT_EQ(list[0].pid, own.pid());
    EXPECT_EQ(list[0].user, "983");
    // A second tree of that user's leaves it open which one it is.
    const OddProcess other({"", {service}, service, asUser(983)});
    EXPECT_EQ(rowsOf(own.port()).size(), viewer() == 0 ? 4U : 0U);
}

TEST_P(SuppliedTools, aLauncherIsNotTheService)
{
    NEEDS_ROOT("be another user");
    const std::string service = program("mongod");
    const OddProcess launcher(
        {"",
         {"sh", "-c", "exec 3<&0; ODD='listen 127.0.0.1' " + service + " & wait"},
         "/bin/sh",
         asUser(984)});
    for (const Row &row : rows(asViewer()))
        EXPECT_NE(row.pid, launcher.pid());
}

TEST_P(SuppliedTools, aLauncherThatNamesThePortIsNotTheServer)
{
    NEEDS_ROOT("be another user");
    const std::string port = std::to_string(freePort());
    const OddProcess launcher({"port " + port + "|launch 127.0.0.1",
                               {"python3", "--port=" + port},
                               program("python3"),
                               asUser(984)});
    ASSERT_TRUE(launcher.isUp());
    const auto list = rowsOf(launcher.port());
    EXPECT_EQ(list.size(), viewer() == 0 ? 1U : 0U);
    for (const Row &row : list)
        EXPECT_NE(row.pid, launcher.pid());
}

TEST_P(SuppliedTools, noArgumentsMakeAServer)
{
    NEEDS_ROOT("be another user");
    const std::string node = program("node");
    // Two trees of one service's user: nothing tells which one holds the socket, whatever one says.
    const OddProcess server({"listen 127.0.0.1", {"node", "server.js"}, node, asUser(984)});
    const std::string port = std::to_string(server.port());
    const OddProcess client({"", {"node", "--port", port, ":" + port}, node, asUser(984)});
    ASSERT_TRUE(client.isUp());
    const auto list = rowsOf(server.port());
    EXPECT_EQ(list.size(), viewer() == 0 ? 1U : 0U);
    for (const Row &row : list)
        EXPECT_EQ(row.pid, server.pid());
}

TEST_P(SuppliedTools, noServerOfAnotherPerson)
{
    NEEDS_ROOT("be another user");
    const std::string server = program("node");
    const std::string port = std::to_string(freePort());
    const OddProcess person({"port " + port + "|listen 127.0.0.1",
                             {"node", "server.js", "--port=" + port},
                             server,
                             asUser(54399)});
    ASSERT_TRUE(person.isUp());
    EXPECT_EQ(rowsOf(person.port()).empty(), viewer() != 0);
    for (const Row &row : rows(asViewer()))
        EXPECT_TRUE(row.descriptor != "NOFD" || row.user != "54399") << row.name;
}

TEST_P(SuppliedTools, onesOwnServerComesBeforeAnothersOnItsPort)
{
    NEEDS_ROOT("be another user");
    const std::string service = program("redis-server");
    const OddProcess other({"listen ::1", {service}, service, asUser(984)});
    const std::string port = "port " + std::to_string(other.port());
    const OddProcess own({port + "|listen 127.0.0.1", {"x"}, program("node"), asViewer()});
    ASSERT_TRUE(other.isUp() && own.isUp());
    const auto list = rowsOf(own.port());
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].pid, own.pid());
    EXPECT_EQ(list[1].pid, other.pid());
}

TEST_P(SuppliedTools, aHiddenProcessIsCalledWhatTheKernelCallsIt)
{
    NEEDS_ROOT("be another user");
    const OddProcess process(
        {"listen 127.0.0.1", {std::string(100'000, 'n')}, program("program"), asUser(984)});
    const auto list = rowsOf(process.port());
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].pid, process.pid());
    EXPECT_EQ(list[0].command, "program");
}

TEST_P(SuppliedTools, aServiceByItsCgroup)
{
    NEEDS_ROOT("make a cgroup");
    const Cgroup group;
    if (!group.isMade())
        GTEST_SKIP() << "a cgroup may not be made here";
    const std::string service = program("redis-server");
    const OddProcess own({"listen 127.0.0.1|fork 2", {service}, service, group.inside(0)});
    ASSERT_TRUE(own.isUp());
    const auto list = rowsOf(own.port());
    ASSERT_EQ(list.size(), viewer() == 0 ? 3U : 1U);
    EXPECT_EQ(list[0].pid, own.pid());
    EXPECT_EQ(list[0].command, "redis-server");
    // Another user's in the same cgroup does not matter, one of the same user's does.
    const OddProcess foreign({"", {service}, service, group.inside(984)});
    EXPECT_EQ(rowsOf(own.port()).size(), viewer() == 0 ? 3U : 1U);
    const OddProcess other({"", {service}, service, group.inside(0)});
    EXPECT_EQ(rowsOf(own.port()).size(), viewer() == 0 ? 3U : 0U);
}

TEST_P(SuppliedTools, aProcessOutsideTheSocketsCgroupDoesNotHoldIt)
{
    NEEDS_ROOT("make a cgroup");
    const Cgroup group;
    if (!group.isMade())
        GTEST_SKIP() << "a cgroup may not be made here";
    const std::string service = program("mongod");
    const OddProcess own({"listen 127.0.0.1", {service}, service, group.inside(984)});
    const OddProcess outside({"", {service}, service, asUser(984)});
    ASSERT_TRUE(own.isUp() && outside.isUp());
    const auto list = rowsOf(own.port());
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].pid, own.pid());
}

TEST_P(SuppliedTools, aSocketMadeInAnothersCgroupIsNotTheOthers)
{
    NEEDS_ROOT("make a cgroup");
    const Cgroup group;
    if (!group.isMade())
        GTEST_SKIP() << "a cgroup may not be made here";
    // A process shuts its descriptors, and is alone in its cgroup once another user's has made a
    // socket there and left.
    const auto attack = [&](uid_t victimUser, uid_t attackerUser) {
        const OddProcess victim({"shut", {"x"}, program("node"), group.inside(victimUser)});
        const OddProcess attacker(
            {"listen 127.0.0.1", {"x"}, program("forger"), group.inside(attackerUser)});
        ASSERT_TRUE(attacker.isUp() && group.release(attacker.pid()));
        for (const Row &row : rowsOf(attacker.port())) {
            EXPECT_NE(row.pid, victim.pid());
            EXPECT_EQ(row.user, std::to_string(attackerUser));
        }
    };
    attack(viewer(), 54399);
    attack(viewer(), 983);
    attack(984, 983);
}

TEST_P(SuppliedTools, manyCgroupsCostNothing)
{
    NEEDS_ROOT("make a cgroup");
    Cgroup group;
    if (!group.isMade())
        GTEST_SKIP() << "a cgroup may not be made here";
    const std::string service = program("mongod");
    const OddProcess own({"listen 127.0.0.1", {service}, service, group.inside(984)});
    const auto cost = [&] {
        double least = 1e9;
        for (int run = 0; run < 5; ++run) {
            rusage before{};
            rusage after{};
            getrusage(RUSAGE_CHILDREN, &before);
            EXPECT_EQ(rowsOf(own.port()).size(), 1U);
            getrusage(RUSAGE_CHILDREN, &after);
            least = std::min(least, milliseconds(after) - milliseconds(before));
        }
        return least;
    };
    const double alone = cost();
    ASSERT_TRUE(group.fill(20'000));
    // A walk over all of them takes 160 ms and more.
    EXPECT_LT(cost(), alone * 2 + 40);
}

TEST_P(SuppliedTools, otherArgumentsAreRefused)
{
    const std::vector<std::vector<std::string>> lists{
        {},
        {"-i"},
        {"-i", "TCP", "-P", "-n"},
        {"-p", "1", "-a", "-d", "cwd", "-F"},
        {"-p", "x", "-a", "-d", "cwd", "-F", "n"},
        {"-p", "0", "-a", "-d", "cwd", "-F", "n"},
        {"-p", "-1", "-a", "-d", "cwd", "-F", "n"},
        {"-p", "1,2", "-a", "-d", "cwd", "-F", "n"},
        {"-p", "99999999999999999999", "-a", "-d", "cwd", "-F", "n"},
        {"-p", "1", "-o", "command="},
        {"--help"}};
    for (const auto &arguments : lists)
        expectRefused(lsof(), arguments, asViewer());
}

TEST_P(SuppliedTools, aFullDiskIsAFailure)
{
    const std::string strange = directory().path("strange (deleted)");
    ASSERT_EQ(mkdir(strange.c_str(), 0777), 0);
    const OddProcess plain({"listen 127.0.0.1", {"x"}, "", asViewer(), -1, directory().path()});
    const OddProcess odd({"", {"x"}, "", asViewer(), -1, strange});
    const auto directoryOf = [](const OddProcess &process) {
        return std::vector<std::string>{
            "-p", std::to_string(process.pid()), "-a", "-d", "cwd", "-F", "n"};
    };
    for (const auto &arguments : {listing, directoryOf(plain), directoryOf(odd)}) {
        std::vector<std::string> command{"-c", "exec \"$0\" \"$@\" >/dev/full", lsof()};
        command.insert(command.end(), arguments.begin(), arguments.end());
        EXPECT_EQ(runProgram("/bin/sh", command, asViewer()).status, 1) << arguments[1];
    }
}

TEST_P(SuppliedTools, lsofWithoutLsofCompleteSaysSoAndPrintsPlainDirectories)
{
    const SharedDirectory alone;
    const std::string lsof = alone.copy(SUPPLIED_TOOLS "/lsof");
    const Output list = runProgram(lsof, listing, asViewer());
    EXPECT_EQ(list.text, "");
    EXPECT_EQ(list.errors, "lsof: lsof-complete cannot be started\n");
    EXPECT_EQ(list.status, 1);
    const OddProcess process({"", {"x"}, "", asViewer(), -1, alone.path()});
    const std::string pid = std::to_string(process.pid());
    EXPECT_EQ(runProgram(lsof, {"-p", pid, "-a", "-d", "cwd", "-F", "n"}, asViewer()).text,
              "p" + pid + "\nn" + alone.path() + "\n");
}

TEST_P(SuppliedTools, workingDirectoriesAsLsofPrintsThem)
{
    const std::vector<std::string> names{"plain",
                                         "a b",
                                         "a\nb\t\x01\x1b\x7f",
                                         "back\\slash",
                                         "caf\xc3\xa9 \xe4\xb8\xad",
                                         "\xff\xfe",
                                         "\xc2\x85\xe2\x80\xa8",
                                         "x (deleted)",
                                         "\b\f\v\r"};
    for (const std::string &name : names) {
        const std::string path = directory().path(name);
        ASSERT_EQ(mkdir(path.c_str(), 0777), 0);
        const OddProcess process({"", {"x"}, "", asViewer(), -1, path});
        const std::vector<std::string> query{
            "-p", std::to_string(process.pid()), "-a", "-d", "cwd", "-F", "n"};
        // Ours prints UTF-8 as it is in any locale.
        const std::string expected = runProgram("/usr/bin/lsof", query, asViewer(), "C.UTF-8").text;
        for (const char *const locale : {"C", "C.UTF-8", "de_DE.ISO-8859-1"}) {
            const Output output = runProgram(lsof(), query, asViewer(), locale);
            EXPECT_EQ(output.text, expected) << locale;
            EXPECT_EQ(output.status, 0);
            // Whichever lsof prints it: the application reads this directory, or none.
            for (const std::string &text :
                 {output.text, runProgram("/usr/bin/lsof", query, asViewer(), locale).text}) {
                const std::string line = lines(text).back();
                const auto back = tidewick::unescapedPath(QString::fromStdString(line.substr(1)));
                const bool isText = QString::fromStdString(name).toStdString() == name;
                EXPECT_TRUE(!back || back->toStdString() == path) << line;
                EXPECT_EQ(back.has_value(), isText && line.find('^') == std::string::npos) << line;
            }
        }
    }
}

// The kernel's list of mounts has blanks and backslashes as octal digits.
TEST_P(SuppliedTools, aWorkingDirectoryOnAMountWithAnOddName)
{
    const std::string place = directory().path("a\tb c\\d");
    const std::string path = place + "/x (deleted)";
    ASSERT_EQ(mkdir(place.c_str(), 0777), 0);
    const auto before = [&] {
        return enterNamespaces(CLONE_NEWNS) &&
               mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               mount("tmpfs", place.c_str(), "tmpfs", 0, nullptr) == 0 &&
               mkdir(path.c_str(), 0777) == 0 && chdir(path.c_str()) == 0 && asViewer()();
    };
    if (runProgram("/bin/true", {}, before).status != 0)
        GTEST_SKIP() << "nothing may be mounted here";
    const Output output =
        runProgram("/bin/sh", {"-c", "exec \"$0\" -p $$ -a -d cwd -F n", lsof()}, before);
    ASSERT_EQ(lines(output.text).size(), 2U) << output.errors;
    EXPECT_EQ(lines(output.text)[1], 'n' + directory().path("a\\tb c\\\\d/x (deleted)"));
}

TEST_P(SuppliedTools, aRemovedWorkingDirectory)
{
    const std::string path = directory().path("gone");
    ASSERT_EQ(mkdir(path.c_str(), 0777), 0);
    const OddProcess process({"", {"x"}, "", asViewer(), -1, path});
    ASSERT_EQ(rmdir(path.c_str()), 0);
    const std::string pid = std::to_string(process.pid());
    EXPECT_EQ(runProgram(lsof(), {"-p", pid, "-a", "-d", "cwd", "-F", "n"}, asViewer()).text,
              "p" + pid + "\nn" + path + "\n");
}

TEST_P(SuppliedTools, aWorkingDirectoryThatMayNotBeRead)
{
    const OddProcess process({"shut", {"x"}, "", asViewer()});
    for (const std::string &pid : {std::to_string(process.pid()), std::string("2147483647")}) {
        const Output output =
            runProgram(lsof(), {"-p", pid, "-a", "-d", "cwd", "-F", "n"}, asViewer());
        if (viewer() == 0 && pid != "2147483647") {
            EXPECT_EQ(output.status, 0);
            continue;
        }
        EXPECT_EQ(output.text, "");
        EXPECT_EQ(output.errors, "");
        EXPECT_EQ(output.status, 1);
    }
}
