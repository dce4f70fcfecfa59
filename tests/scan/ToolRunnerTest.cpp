#include "scan/ProcessToolRunner.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>

using namespace tidewick;

namespace
{

const QString faultyTool = QStringLiteral(FAULTY_TOOL);
constexpr qsizetype sixteenMegabytes = 16777216;

ToolResult run(const QString &program, const QStringList &arguments = {},
               const std::stop_token &stop = {})
{
    return ProcessToolRunner().run(program, arguments, stop);
}

ToolResult runFaultyTool(const QStringList &arguments)
{
    return run(faultyTool, arguments);
}

/// The description of the error that starting `program` ends in.
QString startError(const QString &program)
{
    try {
        run(program);
    } catch (const ToolStartError &error) {
        return error.description();
    }
    return QStringLiteral("(it started)");
}

QString systemText(int errorNumber)
{
    return QString::fromStdString(std::generic_category().message(errorNumber));
}

QString makeFile(const QTemporaryDir &directory, const QByteArray &content)
{
    QFile file(directory.filePath(QStringLiteral("tool")));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    EXPECT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
    return file.fileName();
}

bool isAlive(pid_t pid)
{
    return kill(pid, 0) == 0;
}

/// The process id that a hanging tool writes there, once it is up.
pid_t pidIn(const QString &path)
{
    pid_t pid = 0;
    EXPECT_TRUE(waitUntil([&] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) && (pid = file.readAll().toInt()) > 0;
    }));
    return pid;
}

/// Calls `call` in a thread in which the system opens no handle of a process.
void withoutHandles(int error, const std::function<void()> &call)
{
    std::array<sock_filter, 4> refusal{{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_pidfd_open, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<uint>(error)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }};
    std::jthread([&] {
        const sock_fprog filter{refusal.size(), refusal.data()};
        ASSERT_EQ(prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
        ASSERT_EQ(prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter), 0);
        call();
    });
}

/// A tool that hangs, run in a thread of its own; `pid` is the child's once it is up.
class HangingRun
{
public:
    HangingRun()
        : m_thread([this](const std::stop_token &stop) {
              result = run(faultyTool, {QStringLiteral("hang"), m_pidFile}, stop);
              isOver = true;
          })
    {
        pid = pidIn(m_pidFile);
    }
    void requestStop() { m_thread.request_stop(); }

    ToolResult result;
    std::atomic<bool> isOver = false;
    pid_t pid = 0;

private:
    QTemporaryDir m_directory;
    QString m_pidFile = m_directory.filePath(QStringLiteral("pid"));
    std::jthread m_thread;
};

} // namespace

TEST(ToolRunner, returnsStandardOutputAndExitStatus)
{
    const ToolResult result = run(QStringLiteral("/bin/echo"), {QStringLiteral("hello")});
    EXPECT_EQ(result.standardOutput, "hello\n");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(runFaultyTool({QStringLiteral("exit"), QStringLiteral("3")}).exitStatus, 3);
}

TEST(ToolRunner, handsArgumentsOnUntouchedByAnyShell)
{
    const ToolResult result =
        runFaultyTool({QStringLiteral("arguments"), QStringLiteral("a b"), QString(),
                       QStringLiteral("$HOME"), QStringLiteral("*;`id`|\"'"), QStringLiteral("ü")});
    EXPECT_EQ(result.standardOutput, "a b\n\n$HOME\n*;`id`|\"'\nü\n");
}

TEST(ToolRunner, carriesMegabytesOnBothPipesWithoutLosingAByte)
{
    const ToolResult result = runFaultyTool({QStringLiteral("flood")});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_TRUE(result.standardOutput == QByteArray(2500000, 'a') + QByteArray(2500000, 'b'));
    EXPECT_FALSE(result.isTruncated);
}

TEST(ToolRunner, keepsNothingOfStandardError)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer keeps freed memory for a while";
#endif
    rusage before{};
    getrusage(RUSAGE_SELF, &before);
    EXPECT_EQ(runFaultyTool({QStringLiteral("complain")}).exitStatus, 0); // 200 MB
    rusage after{};
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 20 * 1024); // kilobytes
}

TEST(ToolRunner, killsAToolThatPrintsForEver)
{
    const ToolResult result = runFaultyTool({QStringLiteral("overflow")});
    EXPECT_EQ(result.exitStatus, -1);
    EXPECT_TRUE(result.standardOutput == QByteArray(sixteenMegabytes, 'a'));
    EXPECT_TRUE(result.isTruncated);
}

TEST(ToolRunner, keepsTheWholeOutputUpToItsLimit)
{
    const ToolResult result =
        runFaultyTool({QStringLiteral("close"), QString::number(sixteenMegabytes)});
    EXPECT_EQ(result.exitStatus, 7);
    EXPECT_TRUE(result.standardOutput == QByteArray(sixteenMegabytes, 'a'));
    EXPECT_FALSE(result.isTruncated);
}

TEST(ToolRunner, oneByteBeyondItsLimitIsTooMuch)
{
    const ToolResult result =
        runFaultyTool({QStringLiteral("late"), QString::number(sixteenMegabytes)});
    EXPECT_TRUE(result.standardOutput == QByteArray(sixteenMegabytes, 'a'));
    EXPECT_TRUE(result.isTruncated);
}

TEST(ToolRunner, keepsWhatACrashingToolPrinted)
{
    const ToolResult result = runFaultyTool({QStringLiteral("crash")});
    EXPECT_EQ(result.standardOutput, "aaa");
    EXPECT_EQ(result.exitStatus, -1);
}

TEST(ToolRunner, waitsForTheExitOfAToolThatClosesItsPipes)
{
    EXPECT_EQ(runFaultyTool({QStringLiteral("close"), QStringLiteral("1")}).exitStatus, 7);
}

TEST(ToolRunner, givesTheToolNothingToRead)
{
    EXPECT_EQ(runFaultyTool({QStringLiteral("stdin")}).standardOutput, "0");
}

TEST(ToolRunner, inheritsEnvironmentAndDirectory)
{
    qputenv("TIDEWICK_TEST_VARIABLE", "inherited");
    const QByteArray environment = run(QStringLiteral("/usr/bin/env")).standardOutput;
    EXPECT_TRUE(environment.contains("TIDEWICK_TEST_VARIABLE=inherited\n"));
    qunsetenv("TIDEWICK_TEST_VARIABLE");
    EXPECT_EQ(run(QStringLiteral("/bin/pwd"), {QStringLiteral("-P")}).standardOutput.trimmed(),
              QFile::encodeName(QFileInfo(QStringLiteral(".")).canonicalFilePath()));
}

TEST(ToolRunner, missingToolIsAnErrorWithTheSystemsText)
{
    EXPECT_EQ(startError(QStringLiteral("/nowhere/lsof")),
              QStringLiteral("/nowhere/lsof: ") + systemText(ENOENT));
}

TEST(ToolRunner, directoryIsAnErrorWithTheSystemsText)
{
    EXPECT_EQ(startError(QStringLiteral("/usr")), QStringLiteral("/usr: ") + systemText(EACCES));
}

TEST(ToolRunner, fileThatIsNoProgramIsAnErrorWithTheSystemsText)
{
    const QTemporaryDir directory;
    const QString file = makeFile(directory, "#!/bin/sh\n");
    QFile::setPermissions(file, QFile::ReadOwner);
    EXPECT_EQ(startError(file), file + QStringLiteral(": ") + systemText(EACCES));
}

TEST(ToolRunner, textFileIsNeverHandedToAShell)
{
    const QTemporaryDir directory;
    const QString error = startError(makeFile(directory, "echo run by a shell\n"));
    EXPECT_TRUE(error.contains(systemText(ENOEXEC))) << error.toStdString();
}

TEST(PrintError, isReadAtOnce)
{
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    std::fflush(stdout);
    const pid_t program = fork();
    if (program == 0) {
        dup2(ends[1], STDOUT_FILENO);
        printError("Error: ", std::runtime_error("no such tool"));
        _exit(0); // without the end that would print what waits
    }
    close(ends[1]);
    waitpid(program, nullptr, 0);
    std::array<char, 64> text{};
    EXPECT_GT(read(ends[0], text.data(), text.size() - 1), 0);
    EXPECT_STREQ(text.data(), "Error: no such tool\n");
    close(ends[0]);
}

TEST(ToolRunner, programThatAToolLeavesBehindIsNotAwaited)
{
    QElapsedTimer timer;
    timer.start();
    const ToolResult result =
        run(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QStringLiteral("sleep 30 & echo x")});
    EXPECT_EQ(result.standardOutput, "x\n");
    EXPECT_LT(timer.elapsed(), 20'000);
}

TEST(ToolRunner, keepsNoDescriptor)
{
    const auto descriptors = [] {
        return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::System | QDir::Files).size();
    };
    run(QStringLiteral("/bin/echo"));
    const auto before = descriptors();
    for (int i = 0; i < 20; ++i) {
        run(QStringLiteral("/bin/echo"));
        startError(QStringLiteral("/nowhere/lsof"));
        startError(QStringLiteral("/usr"));
    }
    EXPECT_EQ(descriptors(), before);
}

TEST(ToolRunner, missingDescriptorsAreAnErrorAtAnyStep)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer itself needs descriptors";
#endif
    const auto outcome = [] {
        try {
            return run(QStringLiteral("/bin/echo"), {QStringLiteral("x")}).standardOutput;
        } catch (const ToolStartError &error) {
            return QByteArray("error: ") + error.description().toUtf8();
        }
    };
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const int standardInput = fcntl(STDIN_FILENO, F_GETFD);
    const int lowestFree = dup(STDERR_FILENO);
    close(lowestFree);
    QList<QByteArray> outcomes;
    for (int room = 0; room < 24; ++room) {
        const rlimit few{rlim_t(lowestFree + room), limit.rlim_max};
        setrlimit(RLIMIT_NOFILE, &few);
        outcomes.append(outcome());
        setrlimit(RLIMIT_NOFILE, &limit);
        EXPECT_TRUE(outcomes.last() == "x\n" || outcomes.last().startsWith("error: /bin/echo: "))
            << room << ": " << outcomes.last().toStdString();
        EXPECT_FALSE(outcomes.last().endsWith(systemText(EINVAL).toUtf8()))
            << "it goes on without a child with room for " << room;
        EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left with room for " << room;
    }
    for (int room = 0; room < 2; ++room) // too little for the pipe
        EXPECT_EQ(outcomes[room], "error: /bin/echo: " + systemText(EMFILE).toUtf8());
    EXPECT_EQ(outcomes.last(), "x\n");
    EXPECT_EQ(fcntl(STDIN_FILENO, F_GETFD), standardInput) << "it was closed";
}

TEST(ToolRunner, childWithoutAHandleIsAnErrorAndDoesNotLiveOn)
{
    withoutHandles(ENFILE, [] {
        EXPECT_EQ(startError(QStringLiteral("/usr/bin/yes")),
                  QStringLiteral("/usr/bin/yes: ") + systemText(ENFILE));
    });
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
}

TEST(ToolRunner, childThatHasEndedNeedsNoHandle)
{
    withoutHandles(ESRCH, [] {
        EXPECT_EQ(runFaultyTool({QStringLiteral("exit"), QStringLiteral("3")}).exitStatus, 3);
    });
}

/// A lost output is rare: about one in 100,000. scripts/soak asks often enough.
TEST(ToolRunner, outputOfAToolThatEndsAtOnceIsThere)
{
    for (int i = 0; i < 300; ++i)
        ASSERT_EQ(run(QStringLiteral("/bin/echo"), {QStringLiteral("x")}).standardOutput, "x\n");
}

TEST(ToolRunner, stopKillsAHangingTool)
{
    HangingRun hanging;
    EXPECT_TRUE(isAlive(hanging.pid));
    hanging.requestStop();
    EXPECT_TRUE(waitUntil([&] { return hanging.isOver.load(); }));
    EXPECT_FALSE(isAlive(hanging.pid));
    EXPECT_EQ(hanging.result.exitStatus, -1);
}

TEST(ToolRunner, toolDiesWithTheProgram)
{
    prctl(PR_SET_CHILD_SUBREAPER, 1); // so that this process sees the tool's end
    const QTemporaryDir directory;
    const QString pidFile = directory.filePath(QStringLiteral("pid"));
    const pid_t program = fork();
    if (program == 0) {
        run(faultyTool, {QStringLiteral("hang"), pidFile});
        _exit(0);
    }
    const pid_t tool = pidIn(pidFile);
    kill(program, SIGKILL);
    EXPECT_EQ(waitpid(program, nullptr, 0), program);
    int status = 0;
    EXPECT_TRUE(waitUntil([&] { return waitpid(tool, &status, WNOHANG) == tool; }));
    EXPECT_TRUE(WIFSIGNALED(status));
    kill(tool, SIGKILL);
    prctl(PR_SET_CHILD_SUBREAPER, 0);
}

TEST(ToolRunner, stopRequestedBeforehandKillsTheToolToo)
{
    std::stop_source stopped;
    stopped.request_stop();
    EXPECT_EQ(run(faultyTool, {QStringLiteral("hang")}, stopped.get_token()).exitStatus, -1);
}

TEST(ToolRunner, severalToolsRunSideBySide)
{
    HangingRun first;
    HangingRun second;
    EXPECT_EQ(run(QStringLiteral("/bin/echo"), {QStringLiteral("x")}).standardOutput, "x\n");
    EXPECT_FALSE(first.isOver);
    EXPECT_FALSE(second.isOver);
    first.requestStop();
    EXPECT_TRUE(waitUntil([&] { return first.isOver.load(); }));
    EXPECT_FALSE(second.isOver);
    second.requestStop();
}
