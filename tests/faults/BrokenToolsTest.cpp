#include "tests/faults/BrokenTools.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <csignal>

using namespace tidewick;

namespace
{

const std::array toolFaults{
    ToolFault{"missing", nullptr, "No such file or directory"},
    ToolFault{"notExecutable", "exit 0", "Permission denied"},
    ToolFault{"silent", "exit 0"},
    ToolFault{"failing", "exit 1"},
    ToolFault{"killed", "kill -9 $$"},
    ToolFault{"killedHalfway", "\"$real\" \"$@\" | head -c 9; kill -9 $$"},
    ToolFault{"halfALine", "\"$real\" \"$@\" | head -c -40; exit 0"},
    ToolFault{"noUtf8", "\"$real\" \"$@\"; printf '\\377\\376\\n'; exit 0"},
    ToolFault{"flooding", "exec \"$faulty\" overflow", nullptr,
              "lsof: the list of listeners is too long"},
    ToolFault{"floodingItsErrors", "\"$faulty\" flood >&2; exit 0"},
};

class BrokenTool : public BrokenTools, public testing::WithParamInterface<ToolFault>
{
};

class HangingTool : public BrokenTools, public testing::WithParamInterface<Task>
{
};

} // namespace

TEST_P(HangingTool, leavesTheOtherScansAlone)
{
    const auto server = serve();
    start(system());
    const QList<pid_t> hanging = hang(workers.scans.maxThreadCount() - 1, GetParam());
    const auto another = serve();
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(tellsTheTruthAbout(*server));
    EXPECT_TRUE(tellsTheTruthAbout(*another));
    EXPECT_TRUE(killEnds(*another));
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(rowsOf(*another).isEmpty());
    EXPECT_TRUE(tellsTheTruthAbout(*server));

    endHanging(hanging);
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(tellsTheTruthAbout(*server));
}

TEST_P(HangingTool, inEveryThreadHoldsUpScansUntilOneEndsAndNoKill)
{
    const auto server = serve();
    const auto another = serve();
    start(system());
    const QList<pid_t> hanging = hang(workers.scans.maxThreadCount(), GetParam());
    store->refreshPorts();
    EXPECT_TRUE(killEnds(*another));
    EXPECT_TRUE(tellsTheTruthAbout(*server)) << "the last good list stays";

    endHanging(hanging);
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(tellsTheTruthAbout(*server));
    EXPECT_TRUE(rowsOf(*another).isEmpty());
}

INSTANTIATE_TEST_SUITE_P(At, HangingTool,
                         testing::Values(Task::list, Task::processFacts, Task::directory),
                         [](const auto &info) {
                             return info.param == Task::list           ? "theList"
                                    : info.param == Task::processFacts ? "processFacts"
                                                                       : "theDirectory";
                         });

TEST_F(BrokenTools, killThatHangsIsEndedAfterItsTimeAndTakesNoRowForLong)
{
    const auto server = serve();
    start(system());
    letHang(Task::kill);
    const int together = workers.kills.maxThreadCount();
    const auto first = startKill(server->processId());
    const auto second = startKill(server->processId());
    const QList<pid_t> hanging = hangingTools(together);
    const auto last = startKill(server->processId()); // waits for its thread
    EXPECT_TRUE(rowsOf(*server).isEmpty());
    EXPECT_FALSE(*first);

    ASSERT_TRUE(waitUntil([&] { return *first && *second && *last; }, 30'000));
    EXPECT_EQ(*first, false);
    EXPECT_EQ(*second, false);
    EXPECT_EQ(*last, false);
    for (const pid_t pid : hanging)
        EXPECT_EQ(::kill(pid, 0), -1) << pid;
    EXPECT_FALSE(store->isKillingProcess());
    EXPECT_TRUE(server->isRunning());
    EXPECT_TRUE(tellsTheTruthAbout(*server));

    mend(Task::kill);
    EXPECT_TRUE(killEnds(*server));
}

TEST_P(BrokenTool, ofTheListCostsOneScan)
{
    const auto server = serve();
    start(system());
    ASSERT_TRUE(tellsTheTruthAbout(*server));

    breakTool(Task::list, GetParam());
    ASSERT_TRUE(refresh());
    if (GetParam().listError == nullptr) {
        EXPECT_EQ(store->lastError(), std::nullopt);
        EXPECT_TRUE(rowsOf(*server).isEmpty());
    } else {
        ASSERT_TRUE(store->lastError());
        EXPECT_TRUE(store->lastError()->endsWith(QLatin1String(GetParam().listError)))
            << store->lastError()->toStdString();
        EXPECT_EQ(rowsOf(*server).size(), 1) << "the list before it stays";
    }

    mend(Task::list);
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(tellsTheTruthAbout(*server));
}

TEST_F(FaultTest, lsofWithoutLsofCompleteListsNothingUntilThatIsBack)
{
    const auto server = serve();
    start();
    ASSERT_TRUE(tellsTheTruthAbout(*server));

    const QString complete = QString::fromStdString(programs.path("lsof-complete"));
    const QString away = complete + QStringLiteral("-away");
    ASSERT_TRUE(QFile::rename(complete, away));
    ASSERT_TRUE(refresh());
    EXPECT_EQ(store->lastError(), std::nullopt);
    EXPECT_TRUE(store->runningPorts().isEmpty());

    ASSERT_TRUE(QFile::rename(away, complete));
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(tellsTheTruthAbout(*server));
}

TEST_P(BrokenTool, ofTheDetailsCostsThemAndNoRow)
{
    const auto server = serve();
    start(system());
    for (const Task task : {Task::processFacts, Task::directory}) {
        if (task == Task::directory && GetParam().startError != nullptr)
            continue; // without lsof there is no list either
        breakTool(task, GetParam());
        ASSERT_TRUE(refresh());
        EXPECT_EQ(store->lastError(), std::nullopt);
        ASSERT_EQ(rowsOf(*server).size(), 1);
        EXPECT_TRUE(rowsOf(*server).first().isHttpAccessible);
        EXPECT_FALSE(tellsTheTruthAbout(*server));

        mend(task);
        ASSERT_TRUE(refresh());
        EXPECT_TRUE(tellsTheTruthAbout(*server));
    }
}

TEST_P(BrokenTool, ofTheKillTakesNoRowForLong)
{
    const auto server = serve();
    start(system());
    breakTool(Task::kill, GetParam());
    kill(*server);
    EXPECT_FALSE(store->isKillingProcess());
    ASSERT_TRUE(server->isRunning());
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(tellsTheTruthAbout(*server));

    mend(Task::kill);
    EXPECT_TRUE(killEnds(*server));
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(rowsOf(*server).isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Rows, BrokenTool, testing::ValuesIn(toolFaults), rowName);
