#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"
#include "tests/support/system/SharedDirectory.h"
#include "tests/support/system/Users.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QProcess>

#include <grp.h>
#include <sys/resource.h>
#include <unistd.h>

namespace
{

uid_t user()
{
    return isRealRoot() ? ordinaryUser : geteuid();
}

/// How many processes and threads the user has.
rlim_t tasksOfUser()
{
    rlim_t count = 0;
    for (const QString &name :
         QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")})) {
        const QString process = QStringLiteral("/proc/") + name;
        if (QFileInfo(process).ownerId() == user())
            count += static_cast<rlim_t>(QDir(process + QStringLiteral("/task")).count() - 2);
    }
    return count;
}

/// The program itself, without a display and a session bus.
class Start : public testing::Test
{
protected:
    /// Starts it with so much of a resource and no more.
    void startWith(__rlimit_resource resource, rlim_t most)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                           QStringLiteral("unix:path=/nowhere"));
        environment.insert(QStringLiteral("HOME"), QString::fromStdString(directory.path()));
        // The address sanitizer's leak check would need one more process.
        environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
        program.setProcessEnvironment(environment);
        program.setChildProcessModifier([resource, most] {
            const rlimit limit{most, most};
            setrlimit(resource, &limit);
            if (geteuid() == 0 && resource == RLIMIT_NPROC &&
                (setgroups(0, nullptr) != 0 || setuid(ordinaryUser) != 0))
                _exit(2);
        });
        program.start(QString::fromStdString(directory.copy(TIDEWICK)), QStringList());
    }

    /// Whether it ends by itself, with this line alone.
    testing::AssertionResult isRefusedWith(const QByteArray &line)
    {
        if (!program.waitForFinished(10'000)) {
            program.kill();
            program.waitForFinished();
            return testing::AssertionFailure() << "it goes on";
        }
        const QByteArray printed = program.readAllStandardError();
        if (program.exitStatus() == QProcess::NormalExit && program.exitCode() == 1 &&
            printed == line + '\n')
            return testing::AssertionSuccess();
        return testing::AssertionFailure()
               << "exit " << program.exitCode() << ": " << printed.toStdString();
    }

    /// Runs until a signal ends it.
    void expectToRun()
    {
        EXPECT_FALSE(program.waitForFinished(2000)) << program.readAllStandardError().toStdString();
        program.terminate();
        ASSERT_TRUE(program.waitForFinished(10'000));
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(program.exitCode(), 0);
    }

    SharedDirectory directory;
    QProcess program;
};

class StartWithFewThreads : public Start, public testing::WithParamInterface<rlim_t>
{
};

class StartWithLittleMemory : public Start, public testing::WithParamInterface<rlim_t>
{
};

} // namespace

TEST_P(StartWithFewThreads, isRefusedWithOneLine)
{
    // Programs of the same user that other tests start can take the last ones before it starts.
    ASSERT_TRUE(waitUntil([this] {
        startWith(RLIMIT_NPROC, tasksOfUser() + GetParam());
        return program.waitForStarted();
    }));
    EXPECT_TRUE(isRefusedWith("tidewick: the system gives too few threads: 24 are needed"));
}

INSTANTIATE_TEST_SUITE_P(More, StartWithFewThreads, testing::Values(2, 8, 12, 16));

TEST_P(StartWithLittleMemory, isRefusedWithOneLine)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer itself reserves more";
#endif
    startWith(RLIMIT_AS, GetParam() * 1'000'000);
    EXPECT_TRUE(isRefusedWith(
        "tidewick: the system gives too little memory: 1 GiB of address space is needed"));
}

INSTANTIATE_TEST_SUITE_P(Megabytes, StartWithLittleMemory,
                         testing::Values(250, 300, 350, 400, 500, 600, 800, 1000));

TEST_F(Start, withEnoughThreadsRunsUntilASignalEndsIt)
{
    startWith(RLIMIT_NPROC, tasksOfUser() + 100);
    expectToRun();
}

TEST_F(Start, withEnoughMemoryRunsUntilASignalEndsIt)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer itself reserves more";
#endif
    startWith(RLIMIT_AS, 1'900'000'000);
    expectToRun();
}
