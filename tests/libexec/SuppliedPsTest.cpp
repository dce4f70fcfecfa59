// The supplied ps beside the stock one, as it is installed and as it is where musl is missing.
#include "tests/libexec/SuppliedTools.h"

#include <QElapsedTimer>

#include <array>
#include <csignal>
#include <tuple>

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

/// From here on the list of a directory's files is refused to this process.
bool maySeeNoDirectory()
{
    std::array<sock_filter, 4> steps{{
        {BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)},
        {BPF_JMP | BPF_JEQ | BPF_K, 0, 1, SYS_getdents64},
        {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ERRNO | EPERM},
        {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
    }};
    const sock_fprog filter{steps.size(), steps.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

struct Build
{
    const char *name;
    const char *path;
};

/// ps for one who looks, built in one of the ways.
class SuppliedPs : public testing::TestWithParam<std::tuple<uid_t, Build>>
{
protected:
    void SetUp() override
    {
        if (std::get<uid_t>(GetParam()) == 0 && !isRealRoot())
            GTEST_SKIP() << "only root can look as root";
    }

    BeforeExec asViewer() const
    {
        return asUser(isRealRoot() ? std::get<uid_t>(GetParam()) : geteuid());
    }
    std::string ps() const { return m_ps; }

private:
    SharedDirectory m_directory;
    std::string m_ps = m_directory.copy(std::get<Build>(GetParam()).path, "supplied-ps");
};

std::string parameterName(const testing::TestParamInfo<SuppliedPs::ParamType> &info)
{
    const std::string build = std::get<Build>(info.param).name;
    return (std::get<uid_t>(info.param) == 0 ? "root" : "user") + build;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(As, SuppliedPs,
                         testing::Combine(testing::Values(0U, strangerUser),
                                          testing::Values(Build{"Installed", SUPPLIED_TOOLS "/ps"},
                                                          Build{"System", SYSTEM_PS})),
                         parameterName);

TEST_P(SuppliedPs, otherArgumentsAreRefused)
{
    const std::vector<std::vector<std::string>> lists{{},
                                                      {"-p"},
                                                      {"-p", "1", "-o", "comm="},
                                                      {"-p", "1", "-o", "etime"},
                                                      {"-p", "", "-o", "etime="},
                                                      {"-p", "0", "-o", "etime="},
                                                      {"-p", "x", "-o", "etime="},
                                                      {"-p", "+1", "-o", "etime="},
                                                      {"-p", "2147483648", "-o", "etime="},
                                                      {"-p", "1", "-o", "etime=", "x"},
                                                      {"--help"}};
    for (const auto &arguments : lists)
        expectRefused(ps(), arguments, asViewer());
}

TEST_P(SuppliedPs, aFullDiskIsAFailure)
{
    for (const char *const format : {"command=", "rss=,%cpu=", "etime="}) {
        const std::vector<std::string> command{
            "-c", "exec \"$0\" \"$@\" >/dev/full", ps(), "-p", "1", "-o", format};
        EXPECT_EQ(runProgram("/bin/sh", command, asViewer()).status, 1) << format;
    }
}

TEST_P(SuppliedPs, lessThanFourMegabytes)
{
    if (isSanitized)
        GTEST_SKIP() << "the sanitizers need more";
    expectLessThanFourMegabytes(ps() + " -p 1 -o command=", asViewer());
}

TEST_P(SuppliedPs, theCellsOfPs)
{
    const auto compare = [this](const std::string &pid, const char *locale) {
        for (const char *const format : {"command=", "rss=,%cpu=", "etime="}) {
            const auto read = [&](const std::string &tool) {
                return runProgram(tool, {"-p", pid, "-o", format}, asViewer(), locale);
            };
            // The figures move: all three are the same once nothing does.
            Output before;
            Output supplied;
            Output stock = read("/bin/ps");
            QElapsedTimer timer;
            timer.start();
            do {
                before = stock;
                supplied = read(ps());
                stock = read("/bin/ps");
            } while ((before.text != stock.text || supplied.text != stock.text) &&
                     timer.elapsed() < 10'000);
            EXPECT_EQ(supplied.text, stock.text) << pid << ' ' << format << ' ' << locale;
            EXPECT_EQ(supplied.status, stock.status);
            EXPECT_EQ(supplied.errors, stock.errors);
        }
    };
    for (const char *const name : {"1", "2", "2147483647"})
        compare(name, "C");
    const std::vector<OddProcess::Settings> oddities{
        {"", {"x", "", "a b", "\x01\n\x7f"}},
        {"", {"caf\xc3\xa9", "\xe4\xb8\xad"}},
        {"argv ", {"x", "yyyy"}},
        {"argv next-server (v16.4.6)", {"/usr/bin/node", "a-rather-long-script.js"}},
        {"comm \xff\n) ( \xc3\xa9", {""}},
        {"", {"longer than ps reads", std::string(100'000, 'a'), std::string(100'000, 'b')}},
        {"exit-main|comm x", {"x"}},
        {"fork 1|shut", {"shut"}}};
    for (OddProcess::Settings settings : oddities) {
        settings.before = asViewer();
        const OddProcess process(settings);
        compare(std::to_string(process.pid()), "C");
        compare(std::to_string(process.pid()), "C.UTF-8");
    }
}

TEST_P(SuppliedPs, argumentsThatAreNoText)
{
    // What Debian 12's ps prints. Debian 13's prints other question marks.
    const std::vector<std::pair<std::vector<std::string>, std::string>> rows{
        {{"caf\xc3\xa9", "\xff\xc3\xa9", "\xe4\xb8\xad"}, "caf\xc3\xa9 ??? ???\n"},
        {{"\xe1\xc3\x80~\xc3\xa9", "\xf1\x01\xc3\xa9\xc2\x85\xe4"},
         "?\xc3\x80~\xc3\xa9 ??\xc3\xa9??\n"},
        {{"a\xc2\x85z"}, "a?z\n"}};
    for (const auto &[arguments, printed] : rows) {
        const OddProcess process({"", arguments, "", asViewer()});
        const std::vector<std::string> query{"-p", std::to_string(process.pid()), "-o", "command="};
        EXPECT_EQ(runProgram(ps(), query, asViewer(), "C.UTF-8").text, printed);
        EXPECT_EQ(runProgram(ps(), query, asViewer(), "C").text,
                  runProgram("/bin/ps", query, asViewer(), "C").text);
    }
}

TEST_P(SuppliedPs, theCellsOfPsForABusyProcess)
{
    const OddProcess process({"busy", {"busy"}, "", asViewer()});
    ASSERT_TRUE(process.isUp());
    const auto cells = [&](const std::string &tool) {
        return words(
            runProgram(tool, {"-p", std::to_string(process.pid()), "-o", "rss=,%cpu="}, asViewer())
                .text);
    };
    QElapsedTimer timer;
    timer.start();
    while ((timer.elapsed() < 1000 || std::stod(cells("/bin/ps").at(1)) < 5) &&
           timer.elapsed() < 30'000)
        usleep(10'000);
    // From here on its share of the processor falls, and nothing else moves. Releases of ps round
    // its age differently, by a hundredth of a second.
    constexpr double rounding = 0.02;
    ASSERT_EQ(kill(process.pid(), SIGSTOP), 0);
    for (int attempt = 0; attempt < 5; ++attempt) {
        const auto before = cells("/bin/ps");
        const auto supplied = cells(ps());
        const auto after = cells("/bin/ps");
        ASSERT_EQ(supplied.size(), 2U);
        EXPECT_EQ(supplied[0], after.at(0));
        EXPECT_LE(std::stod(supplied[1]), std::stod(before.at(1)) * (1 + rounding));
        EXPECT_GE(std::stod(supplied[1]), std::stod(after.at(1)) * (1 - rounding));
        EXPECT_GT(std::stod(supplied[1]), 0);
    }
}

TEST_P(SuppliedPs, aStopInTheMiddleOfALineLosesNothing)
{
    const std::string longest(120'000, 'y');
    const OddProcess process({"", {longest}, "", asViewer()});
    ASSERT_TRUE(process.isUp());
    const std::string pid = std::to_string(process.pid());
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    const pid_t tool = fork();
    if (tool == 0) {
        if (dup2(ends[1], STDOUT_FILENO) >= 0 && asViewer()())
            execl(ps().c_str(), "ps", "-p", pid.c_str(), "-o", "command=", nullptr);
        _exit(127);
    }
    ASSERT_GT(tool, 0);
    close(ends[1]);
    const int capacity = fcntl(ends[0], F_GETPIPE_SZ);
    int filled = 0;
    QElapsedTimer timer;
    timer.start();
    while (filled < capacity && timer.elapsed() < 30'000) {
        ASSERT_EQ(ioctl(ends[0], FIONREAD, &filled), 0);
        usleep(1000);
    }
    EXPECT_EQ(filled, capacity);
    int status = -1;
    kill(tool, SIGSTOP);
    waitpid(tool, &status, WUNTRACED);
    EXPECT_TRUE(WIFSTOPPED(status));
    kill(tool, SIGCONT);
    std::string text;
    std::array<char, 65536> buffer;
    for (ssize_t count = 0; (count = read(ends[0], buffer.data(), buffer.size())) > 0;)
        text.append(buffer.data(), size_t(count));
    close(ends[0]);
    EXPECT_EQ(waitpid(tool, &status, 0), tool);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(text.size(), longest.size() + 1);
}

TEST_P(SuppliedPs, psWalksOverNoProcesses)
{
    if (isSanitized)
        GTEST_SKIP() << "the sanitizers read directories";
    const auto before = [this] {
        return asViewer()() && maySeeNoDirectory();
    };
    const std::vector<std::string> query{"-p", "1", "-o", "command="};
    EXPECT_EQ(runProgram("/bin/ls", {"/"}, before).text, "");
    EXPECT_EQ(runProgram(ps(), query, before).text, runProgram("/bin/ps", query, asViewer()).text);
}

TEST_P(SuppliedPs, aProcessThatHasEnded)
{
    OddProcess process({"comm a)\n b", {"x"}, "", asViewer()});
    ASSERT_TRUE(process.isUp());
    ASSERT_GT(process.pid(), 0);
    kill(process.pid(), SIGKILL);
    const std::string pid = std::to_string(process.pid());
    for (int attempt = 0; attempt < 500; ++attempt) {
        if (runProgram("/bin/ps", {"-p", pid, "-o", "command="}, asViewer(), "C")
                .text.ends_with("<defunct>\n"))
            break;
        usleep(10'000);
    }
    for (const char *const format : {"command=", "rss=,%cpu="})
        EXPECT_EQ(runProgram(ps(), {"-p", pid, "-o", format}, asViewer(), "C").text,
                  runProgram("/bin/ps", {"-p", pid, "-o", format}, asViewer(), "C").text);
}
