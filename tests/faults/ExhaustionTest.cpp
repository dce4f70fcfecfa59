#include "tests/faults/BrokenTools.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"
#include "tests/support/system/Users.h"

#include <QDir>

#include <array>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tidewick;

namespace
{

#ifdef __SANITIZE_ADDRESS__
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

qsizetype openDescriptors()
{
    const auto everything = QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot;
    return QDir(QStringLiteral("/proc/self/fd")).entryList(everything).size();
}

/// While it lives, this process may have no more than so many of a resource.
class Limit
{
public:
    Limit(__rlimit_resource resource, rlim_t most) : m_resource(resource)
    {
        getrlimit(resource, &m_before);
        const rlimit low{most, m_before.rlim_max};
        setrlimit(resource, &low);
    }
    ~Limit() { setrlimit(m_resource, &m_before); }
    Q_DISABLE_COPY_MOVE(Limit)

private:
    __rlimit_resource m_resource;
    rlimit m_before{};
};

/// While it lives, this process may open `left` more descriptors.
class FewDescriptors
{
public:
    explicit FewDescriptors(int left)
    {
        for (int copy = 0; (copy = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)) >= 0;)
            m_copies.push_back(copy);
        for (; left > 0; --left) {
            close(m_copies.back());
            m_copies.pop_back();
        }
    }
    ~FewDescriptors()
    {
        for (const int copy : m_copies)
            close(copy);
    }
    Q_DISABLE_COPY_MOVE(FewDescriptors)

private:
    const Limit m_limit{RLIMIT_NOFILE, 300};
    std::vector<int> m_copies;
};

/// The system's text, or that of newer Qt where it cannot open the null device.
bool isAboutDescriptors(const QString &error)
{
    return error.endsWith(QStringLiteral("Too many open files")) ||
           error.endsWith(QStringLiteral("Could not open input redirection for reading"));
}

bool canFork()
{
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    if (child > 0)
        waitpid(child, nullptr, 0);
    return child > 0;
}

/// Scans hang in every thread, and what a kill needs is exhausted.
class BusyMachine : public BrokenTools
{
protected:
    void startAndHang()
    {
        m_server = serve();
        start(system());
        m_hanging = hang(workers.scans.maxThreadCount());
    }

    /// A kill fails at once. Its rescan waits as any, and with it the answer.
    void killFailsAsSoonAsAScanEnds()
    {
        const auto answer = startKill(m_server->processId());
        EXPECT_TRUE(waitUntil([this] { return rowsOf(*m_server).isEmpty(); }));
        EXPECT_TRUE(waitUntil([this] { return workers.kills.activeThreadCount() == 0; }));
        EXPECT_EQ(*answer, std::nullopt);
        endHanging(m_hanging);
        EXPECT_TRUE(waitUntil([&answer] { return answer->has_value(); }));
        EXPECT_EQ(*answer, false);
        EXPECT_FALSE(store->isKillingProcess());
        EXPECT_TRUE(m_server->isRunning());
    }

    void allIsWellAfterwards() { allIsWellWith(*m_server); }

private:
    std::unique_ptr<ServerProgram> m_server;
    QList<pid_t> m_hanging;
};

} // namespace

// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): GTEST_SKIP returns from the test
#define NEEDS_NO_DESCRIPTORS_ITSELF()                                                              \
    if (isSanitized)                                                                               \
    GTEST_SKIP() << "the sanitizer takes a pointer for wrong where it may open no pipe"

TEST_F(FaultTest, scanWithoutDescriptorsFailsWithTheSystemsTextAndLeaksNone)
{
    NEEDS_NO_DESCRIPTORS_ITSELF();
    const auto server = serve();
    start();
    ASSERT_TRUE(tellsTheTruthAbout(*server));
    const qsizetype atFirst = openDescriptors();
    int failures = 0;
    for (int left = 0; left <= 12; ++left) {
        {
            const FewDescriptors few(left);
            ASSERT_TRUE(refresh()) << left;
        }
        if (store->lastError()) {
            ++failures;
            EXPECT_TRUE(isAboutDescriptors(*store->lastError()))
                << store->lastError()->toStdString();
        }
        EXPECT_EQ(rowsOf(*server).size(), 1) << left;
        ASSERT_TRUE(refresh());
        EXPECT_TRUE(tellsTheTruthAbout(*server)) << left;
        EXPECT_TRUE(waitUntil([&] { return openDescriptors() <= atFirst; })) << left;
    }
    EXPECT_GT(failures, 4);
    EXPECT_LT(failures, 12);
}

TEST_F(FaultTest, overlappingScansAndAKillWithoutDescriptorsFailTogether)
{
    NEEDS_NO_DESCRIPTORS_ITSELF();
    const auto server = serve();
    start();
    {
        const FewDescriptors none(0);
        for (int i = 0; i < 3; ++i)
            store->refreshPorts();
        EXPECT_EQ(kill(*server), false);
        endEveryScan();
    }
    allIsWellWith(*server);
}

TEST_F(FaultTest, scanAndKillWithoutProcessesFailWithTheSystemsText)
{
    const OrdinaryUser user;
    const auto server = serve();
    start();
    ASSERT_TRUE(tellsTheTruthAbout(*server));
    {
        const Limit none(RLIMIT_NPROC, 0);
        if (canFork())
            GTEST_SKIP() << "no limit holds this user";
        for (int i = 0; i < 3; ++i)
            store->refreshPorts();
        ASSERT_TRUE(refresh());
        endEveryScan();
        ASSERT_TRUE(store->lastError());
        EXPECT_TRUE(
            store->lastError()->endsWith(QStringLiteral("Resource temporarily unavailable")))
            << store->lastError()->toStdString();
        EXPECT_EQ(rowsOf(*server).size(), 1);
        EXPECT_EQ(kill(*server), false);
    }
    allIsWellWith(*server);
}

TEST_F(BusyMachine, withoutDescriptorsFailsAKillAndGoesOn)
{
    NEEDS_NO_DESCRIPTORS_ITSELF();
    startAndHang();
    {
        const FewDescriptors none(0);
        killFailsAsSoonAsAScanEnds();
    }
    allIsWellAfterwards();
}

TEST_F(BusyMachine, withoutProcessesFailsAKillAndGoesOn)
{
    const OrdinaryUser user;
    startAndHang();
    {
        const Limit none(RLIMIT_NPROC, 0);
        if (canFork())
            GTEST_SKIP() << "no limit holds this user";
        killFailsAsSoonAsAScanEnds();
    }
    allIsWellAfterwards();
}
