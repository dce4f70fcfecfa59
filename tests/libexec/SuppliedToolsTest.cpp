// The supplied lsof beside real processes, each as odd as one that was met.
#include "tests/libexec/SuppliedTools.h"
#include "tests/support/ServerProgram.h"

#include <QElapsedTimer>
#include <QFile>

#include <cerrno>
#include <csignal>
#include <map>

#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

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
    const std::string original = program("redis-check-rdb");
    ASSERT_EQ(symlink(original.c_str(), directory().path("redis-server").c_str()), 0);
    EXPECT_EQ(commandOf({"", {"redis-server *:6379"}, original}), "redis-server");
    EXPECT_EQ(commandOf({"", {"/elsewhere/redis-server"}, original}), "redis-server");
    EXPECT_EQ(commandOf({"comm redis-server", {"x"}, original}), "redis-server");
    EXPECT_EQ(commandOf({"", {"postgres"}, original}), "redis-check-rdb");
    program("mongod");
    EXPECT_EQ(commandOf({"", {"mongod"}, original}), "redis-check-rdb");
    EXPECT_EQ(commandOf({"", {"/usr/bin/../bin/node"}, original}), "redis-check-rdb");
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
        return scans >= 200 || timer.elapsed() > 20'000;
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

TEST_P(SuppliedTools, tenThousandProcesses)
{
    const OddProcess crowd({"idle 10000", {"x"}, "", asViewer()});
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
    QElapsedTimer timer;
    timer.start();
    // A thousand times, where the machine is not too busy for that.
    for (int run = 0; run < 50 || (run < 1000 && timer.elapsed() < 20'000); ++run)
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
    const std::string server = program("python3");
    // A service, and a person's one whose arguments, and those of its child, name the port.
    for (const uid_t user : {984U, 54399U}) {
        // A new port each time: the last one's holder may still be ending.
        const std::string port = std::to_string(freePort());
        const OddProcess launcher({"port " + port + "|launch 127.0.0.1",
                                   {"python3", "--port=" + port},
                                   server,
                                   asUser(user)});
        ASSERT_TRUE(launcher.isUp());
        const auto list = rowsOf(launcher.port());
        EXPECT_EQ(list.size(), viewer() == 0 ? 1U : 0U);
        for (const Row &row : list)
            EXPECT_NE(row.pid, launcher.pid());
    }
    // Only the launcher names it, and its name is another one.
    const std::string listen = "ODD='port " + std::to_string(freePort()) + "|listen 127.0.0.1' ";
    const OddProcess shell(
        {"", {"sh", "-c", listen + server + " & wait"}, "/bin/sh", asUser(54399)});
    ASSERT_TRUE(shell.isUp());
    for (const Row &row : rowsOf(shell.port()))
        EXPECT_NE(row.pid, shell.pid());
}

TEST_P(SuppliedTools, aClientIsNotTheServer)
{
    NEEDS_ROOT("be another user");
    const std::string node = program("node");
    const OddProcess server({"listen 127.0.0.1", {"node", "server.js"}, node, asUser(54399)});
    const std::string port = std::to_string(server.port());
    const OddProcess client(
        {"", {"node", "--upstream=http://localhost:" + port}, node, asUser(54399)});
    ASSERT_TRUE(client.isUp());
    const auto list = rowsOf(server.port());
    EXPECT_EQ(list.size(), viewer() == 0 ? 1U : 0U);
    for (const Row &row : list)
        EXPECT_EQ(row.pid, server.pid());
}

TEST_P(SuppliedTools, aUserWithTooManyArgumentsHidesOnlyItsOwn)
{
    NEEDS_ROOT("be another user");
    if (isSanitized)
        GTEST_SKIP() << "the sanitizers need more memory";
    const std::string node = program("node");
    const int port = freePort();
    const std::string number = std::to_string(port);
    const OddProcess told({"port " + number + "|listen 127.0.0.1",
                           {"node", "--port=" + number},
                           node,
                           asUser(54399)});
    std::string text;
    for (int i = 0; i < 100; ++i)
        text += number + ' ' + std::string(1200, '4') + ' ';
    const OddProcess crowd({"idle 300", {"x", text}, node, asUser(54398)});
    const int other = freePort();
    const OddProcess lost({"port " + std::to_string(other) + "|listen 127.0.0.1",
                           {"node", "--port=" + std::to_string(other)},
                           node,
                           asUser(54398)});
    ASSERT_TRUE(told.isUp() && crowd.isUp() && lost.isUp());
    const auto list = rowsOf(port);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].pid, told.pid());
    EXPECT_EQ(rowsOf(other).size(), viewer() == 0 ? 1U : 0U);
    const OddProcess usage(
        {"usage " + lsof() + " -i TCP -P -n -sTCP:LISTEN", {"x"}, "", asViewer()});
    ASSERT_EQ(usage.lines().size(), 1U);
    RecordProperty("KiB", usage.port());
    EXPECT_LT(usage.port(), 6144);
}

TEST_P(SuppliedTools, aNameThatAnotherUserMadeLong)
{
    NEEDS_ROOT("be another user");
    const OddProcess process(
        {"listen 127.0.0.1", {std::string(100'000, 'n')}, program("n"), asUser(984)});
    const auto list = rowsOf(process.port());
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].pid, process.pid());
    EXPECT_EQ(list[0].command, viewer() == 0 ? "n" : std::string(255, 'n'));
}

TEST_P(SuppliedTools, aServerOfAnotherPerson)
{
    NEEDS_ROOT("be another user");
    const std::string server = program("node");
    const int port = freePort();
    const std::string address = "127.0.0.1:" + std::to_string(port);
    const OddProcess told({"port " + std::to_string(port) + "|listen 127.0.0.1",
                           {"node", "server.js", "--port=" + std::to_string(port)},
                           server,
                           asUser(54399)});
    const OddProcess silent({"listen 127.0.0.1", {"node", "server.js"}, server, asUser(54399)});
    auto list = rowsOf(port);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].pid, told.pid());
    EXPECT_EQ(list[0].command, "node");
    EXPECT_EQ(rowsOf(silent.port()).size(), viewer() == 0 ? 1U : 0U);
    const OddProcess other({"", {"node", address}, server, asUser(54399)});
    EXPECT_EQ(rowsOf(port).size(), viewer() == 0 ? 1U : 0U);
}

TEST_P(SuppliedTools, aServiceByItsCgroup)
{
    NEEDS_ROOT("make a cgroup");
    std::string group;
    for (const char *const root : {"/sys/fs/cgroup", "/sys/fs/cgroup/unified"}) {
        group = std::string(root) + "/tidewick-test-" + std::to_string(getpid());
        if (access((std::string(root) + "/cgroup.procs").c_str(), W_OK) == 0 &&
            mkdir(group.c_str(), 0755) == 0)
            break;
        group.clear();
    }
    if (group.empty())
        GTEST_SKIP() << "a cgroup may not be made here";
    const auto inGroup = [&group] {
        const int file = open((group + "/cgroup.procs").c_str(), O_WRONLY);
        return write(file, "0", 1) == 1;
    };
    const std::string service = program("redis-server");
    {
        const OddProcess own({"listen 127.0.0.1|fork 2", {service}, service, inGroup});
        ASSERT_TRUE(own.isUp());
        const auto list = rowsOf(own.port());
        ASSERT_EQ(list.size(), viewer() == 0 ? 3U : 1U);
        EXPECT_EQ(list[0].pid, own.pid());
        EXPECT_EQ(list[0].command, "redis-server");
        const OddProcess other({"", {service}, service, inGroup});
        EXPECT_EQ(rowsOf(own.port()).size(), viewer() == 0 ? 3U : 0U);
    }
    {
        const auto personInGroup = [&inGroup] {
            return inGroup() && asUser(54399)();
        };
        const OddProcess own({"listen 127.0.0.1", {service}, service, personInGroup});
        const OddProcess other({"", {service}, service, personInGroup});
        // One outside the cgroup in which the socket was made does not hold it, whatever it names.
        const OddProcess outside(
            {"", {service, "--port", std::to_string(own.port())}, service, asUser(54399)});
        ASSERT_TRUE(own.isUp() && other.isUp() && outside.isUp());
        for (const Row &row : rowsOf(own.port()))
            EXPECT_EQ(row.pid, own.pid());
    }
    for (int attempt = 0; attempt < 100 && rmdir(group.c_str()) != 0; ++attempt)
        usleep(10'000);
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
        for (const char *const locale : {"C", "C.UTF-8"}) {
            const Output output = runProgram(lsof(), query, asViewer(), locale);
            EXPECT_EQ(output.text, runProgram("/usr/bin/lsof", query, asViewer(), locale).text);
            EXPECT_EQ(output.status, 0);
        }
    }
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
