// The supplied lsof and ps beside processes that no reader of their memory, or of the file system
// that they run on, ever gets an answer from.
#include "tests/libexec/SuppliedTools.h"
#include "tests/support/WaitUntil.h"

#include <QElapsedTimer>

#include <fstream>
#include <memory>

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

constexpr uid_t serviceUser = 983;

class HungProcess : public SuppliedTools
{
protected:
    /// tests/libexec/hung_process.c called `name`. False where the kernel refuses its file system.
    bool start(const std::string &how, uid_t user, const std::string &name,
               const std::string &launcher = {})
    {
        const std::string program = directory().copy(HUNG_PROCESS, name);
        const std::string mount = directory().path("mount");
        EXPECT_EQ(mkdir(mount.c_str(), 0755), 0);
        const std::string run =
            how == "cover" ? directory().copy(oddProgram(), "mount/renamed") : oddProgram();
        std::vector<std::string> arguments{program, how, std::to_string(user), mount, run};
        if (!launcher.empty())
            arguments.insert(arguments.begin(), launcher);
        m_process = std::make_unique<OddProcess>(OddProcess::Settings{
            "comm node|listen 127.0.0.1", arguments, launcher.empty() ? program : launcher});
        return m_process->isUp();
    }

    std::string refusal() const
    {
        return m_process->lines().empty() ? "it did not start" : m_process->lines().back();
    }

    pid_t pid() const { return m_process->port(0); }
    int port() const { return m_process->port(1); }
    void stopAnswering() const { ::kill(m_process->pid(), SIGUSR1); }

    bool isMounted() const
    {
        std::ifstream mounts("/proc/" + std::to_string(pid()) + "/mountinfo");
        const std::string place = ' ' + directory().path("mount") + ' ';
        for (std::string line; std::getline(mounts, line);) {
            if (line.find(place) != std::string::npos)
                return true;
        }
        return false;
    }

    /// Sees the file systems that the process sees.
    BeforeExec asViewerBeside() const
    {
        return [this] {
            return (isRoot() || enter("user", CLONE_NEWUSER)) && enter("mnt", CLONE_NEWNS) &&
                   asViewer()();
        };
    }

    /// A run that is killed where it hangs. It must be as fast as one that meets no such process,
    /// up to the deadlines of the tools and what a loaded machine adds.
    Output run(const std::string &tool, const std::vector<std::string> &arguments,
               const BeforeExec &before) const
    {
        std::vector<std::string> list{"-s", "KILL", "20", tool};
        list.insert(list.end(), arguments.begin(), arguments.end());
        QElapsedTimer timer;
        timer.start();
        // No signal ends one that waits for the dead file system, so that ends after a while.
        const pid_t watchdog = fork();
        if (watchdog == 0) {
            usleep(30'000'000);
            _exit(::kill(m_process->pid(), SIGKILL));
        }
        Output output = runProgram("/usr/bin/timeout", list, before);
        ::kill(watchdog, SIGKILL);
        waitpid(watchdog, nullptr, 0);
        EXPECT_LT(timer.elapsed(), 10'000) << tool;
        return output;
    }

    void expectOneRow(const std::string &command, const BeforeExec &before) const
    {
        const OddProcess other({"listen 127.0.0.1", {"x"}, program("plain"), before});
        const std::string end = ':' + std::to_string(port());
        std::vector<std::vector<std::string>> hung;
        bool isOtherListed = false;
        for (const std::string &line : lines(run(lsof(), listing, before).text)) {
            const auto columns = words(line);
            if (columns.size() > 8 && columns[8].ends_with(end))
                hung.push_back(columns);
            isOtherListed = isOtherListed || (columns.size() > 1 && columns[0] == "plain" &&
                                              columns[1] == std::to_string(other.pid()));
        }
        EXPECT_TRUE(isOtherListed);
        ASSERT_EQ(hung.size(), 1U);
        EXPECT_EQ(hung[0][0], command);
        EXPECT_EQ(hung[0][1], std::to_string(pid()));
    }

private:
    bool enter(const char *name, int type) const
    {
        const std::string path = "/proc/" + std::to_string(pid()) + "/ns/" + name;
        const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        const bool isIn = setns(file, type) == 0;
        close(file);
        return isIn;
    }

    std::unique_ptr<OddProcess> m_process;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(As, HungProcess, testing::Values(0U, strangerUser), viewerName);

TEST_P(HungProcess, ofAnotherUserHoldsUpNoList)
{
    NEEDS_ROOT("be another user");
    if (!start("memory", serviceUser, "mongod"))
        GTEST_SKIP() << refusal();
    expectOneRow("mongod", asViewer());
}

TEST_P(HungProcess, ofOnesOwnHoldsUpNoList)
{
    if (!start("memory", viewer(), "my-server"))
        GTEST_SKIP() << refusal();
    expectOneRow("my-server", asViewer());
}

TEST_P(HungProcess, whoseNameOnlyItsMemoryTellsHoldsUpNoList)
{
    const char *const loader = "/lib64/ld-linux-x86-64.so.2";
    if (access(loader, X_OK) != 0)
        GTEST_SKIP() << "there is no " << loader;
    if (!start("memory", viewer(), "node", loader))
        GTEST_SKIP() << refusal();
    expectOneRow("ld-linux-x86-64.so.2", asViewer());
}

TEST_P(HungProcess, onADeadFileSystemHoldsUpNoList)
{
    if (!start("mount", viewer(), "server"))
        GTEST_SKIP() << refusal();
    stopAnswering();
    // It calls itself "node". Whether a file of that name is beside it, nobody can tell.
    expectOneRow("renamed", asViewerBeside());
}

TEST_P(HungProcess, belowADeadFileSystemHoldsUpNoList)
{
    if (!start("cover", viewer(), "server"))
        GTEST_SKIP() << refusal();
    if (!waitUntil([this] { return isMounted(); }))
        GTEST_SKIP() << "a file system may not be mounted here";
    stopAnswering();
    // Only the dead file system could tell whether a file called "node" is beside it.
    expectOneRow("renamed", asViewerBeside());
}

TEST_P(HungProcess, holdsUpNoPs)
{
    if (!start("memory", viewer(), "my-server"))
        GTEST_SKIP() << refusal();
    for (const char *const ps : {SUPPLIED_TOOLS "/ps", SYSTEM_PS}) {
        const std::string copy = directory().copy(
            ps, std::string(ps).find("system") == std::string::npos ? "ps" : "system-ps");
        // Whoever starts it may have turned off the signal that ends it.
        const auto ask = [&](const char *format) {
            return run("/usr/bin/env",
                       {"--block-signal=ALRM", "--ignore-signal=ALRM", copy, "-p",
                        std::to_string(pid()), "-o", format},
                       asViewer());
        };
        EXPECT_EQ(ask("command=").text, "") << ps;
        EXPECT_EQ(words(ask("rss=,%cpu=").text).size(), 2U) << ps;
        EXPECT_EQ(words(ask("etime=").text).size(), 1U) << ps;
    }
}
