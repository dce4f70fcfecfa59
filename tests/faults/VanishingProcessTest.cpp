#include "scan/ProcessToolRunner.h"
#include "scan/http/CurlHttpClient.h"
#include "tests/faults/FaultTest.h"
#include "tests/support/RecordingHttpClient.h"
#include "tests/support/RecordingToolRunner.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"

#include <QDeadlineTimer>
#include <QThread>

#include <atomic>
#include <functional>

#include <csignal>
#include <linux/sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tidewick;

struct StepRow
{
    const char *name;
    /// How many steps of the scan come before the end of the process: the list, three runs of ps,
    /// the directory, and then the requests of the probe.
    int steps;
    bool hasCommandLine;
    bool hasDirectory;
    bool hasAnswered;
};

namespace
{

/// The real tools and the real probe. Once it is armed, `strike` runs after so many steps of a
/// scan.
class Interruption
{
public:
    void arm(int steps, std::function<void()> strike)
    {
        m_strike = std::move(strike);
        m_stepsLeft = steps;
    }

    SystemInterfaces system(ToolTable table)
    {
        auto tools =
            std::make_shared<RecordingToolRunner>([this](const auto &call, const auto &stop) {
                ToolResult result = ProcessToolRunner().run(call.program, call.arguments, stop);
                step();
                return result;
            });
        auto http = std::make_shared<RecordingHttpClient>([this](const HttpRequest &request) {
            TlsEvidence evidence;
            HttpOutcome outcome = CurlHttpClient().send(request, evidence, {});
            step();
            return outcome;
        });
        return {tools, std::move(table), http};
    }

private:
    void step()
    {
        if (--m_stepsLeft == 0)
            m_strike();
    }

    std::atomic<int> m_stepsLeft = 0;
    std::function<void()> m_strike;
};

/// Ends the process and waits until its parent has collected it, in another thread.
void end(pid_t pid)
{
    const QDeadlineTimer deadline(10'000);
    while (::kill(pid, SIGKILL) == 0 && !deadline.hasExpired())
        QThread::msleep(1);
}

class VanishingProcess : public FaultTest, public testing::WithParamInterface<StepRow>
{
protected:
    void isGoneFromTheNextList(const ToolTable &table)
    {
        const auto server = serve();
        const pid_t pid = pid_t(server->processId());
        start(m_interruption.system(table));
        ASSERT_TRUE(tellsTheTruthAbout(*server));
        const qint64 port = rowsOf(*server).first().port();

        m_interruption.arm(GetParam().steps, [pid] { end(pid); });
        ASSERT_TRUE(refresh());
        EXPECT_EQ(store->lastError(), std::nullopt);
        ASSERT_EQ(rowsOf(*server).size(), 1);
        const PortInfo record = rowsOf(*server).first();
        EXPECT_EQ(record.port(), port);
        EXPECT_EQ(!record.fullCommand.isEmpty(), GetParam().hasCommandLine);
        EXPECT_EQ(!record.workingDirectory.isEmpty(), GetParam().hasDirectory);
        EXPECT_EQ(record.isHttpAccessible, GetParam().hasAnswered);

        const auto successor = serve(int(port));
        ASSERT_TRUE(refresh());
        EXPECT_TRUE(rowsOf(*server).isEmpty());
        EXPECT_TRUE(tellsTheTruthAbout(*successor));
        EXPECT_EQ(kill(*server), false) << "nobody has that process id any more";
        EXPECT_TRUE(tellsTheTruthAbout(*successor));
    }

private:
    Interruption m_interruption;
};

/// A process of this very id, if the system grants it: a web server on `port`.
pid_t startServerAs(pid_t pid, int port)
{
    clone_args arguments{};
    arguments.exit_signal = SIGCHLD;
    arguments.set_tid = reinterpret_cast<uint64_t>(&pid);
    arguments.set_tid_size = 1;
    const QByteArray portText = QByteArray::number(port);
    const auto child = pid_t(syscall(SYS_clone3, &arguments, sizeof arguments));
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        execl("/usr/bin/python3", "python3", "-m", "http.server", "--bind", "127.0.0.1",
              portText.constData(), nullptr);
        _exit(127);
    }
    return child;
}

} // namespace

TEST_P(VanishingProcess, isGoneFromTheNextListOfTheSuppliedTools)
{
    isGoneFromTheNextList(realTools());
}

TEST_P(VanishingProcess, isGoneFromTheNextListOfTheStockTools)
{
    isGoneFromTheNextList(ToolTable::stock());
}

INSTANTIATE_TEST_SUITE_P(Rows, VanishingProcess,
                         testing::Values(StepRow{"afterTheList", 1, false, false, false},
                                         StepRow{"afterItsCommandLine", 2, true, false, false},
                                         StepRow{"afterItsUsage", 3, true, false, false},
                                         StepRow{"afterItsAge", 4, true, false, false},
                                         StepRow{"afterItsDirectory", 5, true, true, false},
                                         StepRow{"afterItsAnswer", 6, true, true, true}),
                         rowName);

TEST_F(FaultTest, processIdGivenToAnotherBeforeTheNextListHasThatOneKilled)
{
    auto server = serve();
    const auto pid = pid_t(server->processId());
    start();
    ASSERT_TRUE(tellsTheTruthAbout(*server));
    server.reset();

    if (startServerAs(pid, freePort()) != pid)
        GTEST_SKIP() << "the system grants no process id of one's choice";
    ASSERT_EQ(store->runningPorts().size(), 1) << "still the row of the one that has ended";
    EXPECT_EQ(kill(pid), true);
    EXPECT_TRUE(store->runningPorts().isEmpty());
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
}

TEST_F(FaultTest, processIdOfAnotherProcessIsListedAsThatProcess)
{
    auto server = serve();
    const auto pid = pid_t(server->processId());
    start();
    ASSERT_TRUE(tellsTheTruthAbout(*server));
    server.reset();

    const int port = freePort();
    if (startServerAs(pid, port) != pid)
        GTEST_SKIP() << "the system grants no process id of one's choice";
    const auto listed = [this] {
        return refresh() && !store->runningPorts().isEmpty();
    };
    ASSERT_TRUE(waitUntil(listed));
    ASSERT_EQ(store->runningPorts().size(), 1);
    EXPECT_EQ(store->runningPorts().first().port(), port);
    EXPECT_EQ(store->runningPorts().first().pid(), QString::number(pid));
    ::kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(store->runningPorts().isEmpty());
}
