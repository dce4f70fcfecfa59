#include "scan/CurlHttpClient.h"
#include "scan/ProcessToolRunner.h"
#include "tests/faults/FaultTest.h"
#include "tests/support/TestText.h"
#include "tests/support/WaitUntil.h"

#include <QFile>

#include <array>
#include <csignal>

using namespace tidewick;

struct ToolFault
{
    const char *name;
    /// What the tool does instead of its task, as a shell has it; null where it is missing.
    const char *script;
    /// The system's text where it cannot be started.
    const char *error = nullptr;
};

namespace
{

/// The part of a scan, or of a kill, that a tool has.
enum class Task { list, processFacts, folder, kill };

const std::array toolFaults{
    ToolFault{"missing", nullptr, "No such file or directory"},
    ToolFault{"notExecutable", "exit 0", "Permission denied"},
    ToolFault{"silent", "exit 0"},
    ToolFault{"failing", "exit 1"},
    ToolFault{"killed", "kill -9 $$"},
    ToolFault{"killedHalfway", "\"$real\" \"$@\" | head -c 9; kill -9 $$"},
    ToolFault{"halfALine", "\"$real\" \"$@\" | head -c -40; exit 0"},
    ToolFault{"noUtf8", "\"$real\" \"$@\"; printf '\\377\\376\\n'; exit 0"},
    ToolFault{"flooding", "exec \"$faulty\" overflow"},
    ToolFault{"floodingItsErrors", "\"$faulty\" flood >&2; exit 0"},
};

/// Tools in a folder of the test's own, each the real one until it is broken.
class BrokenTools : public FaultTest
{
protected:
    BrokenTools()
    {
        for (const Task task : {Task::list, Task::processFacts, Task::kill})
            mend(task);
    }

    SystemInterfaces system() const
    {
        const ToolTable table{{path(Task::list)}, {path(Task::processFacts)}, {path(Task::kill)}};
        return {std::make_shared<ProcessToolRunner>(), table, std::make_shared<CurlHttpClient>()};
    }

    void breakTool(Task task, const ToolFault &fault) const
    {
        QFile::remove(path(task));
        if (fault.script == nullptr)
            return;
        QFile file(path(task));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        // A kill that half works works.
        const QString own = task == Task::kill ? QStringLiteral("/bin/echo") : real(task);
        file.write("#!/bin/sh\nreal='" + own.toLocal8Bit() + "' faulty='" FAULTY_TOOL "'\n");
        // lsof has two of the tasks.
        if (task == Task::list || task == Task::folder)
            file.write(QByteArray("if [ \"$1\" != ") + (task == Task::list ? "-i" : "-p") +
                       " ]; then exec \"$real\" \"$@\"; fi\n");
        file.write(fault.script);
        if (fault.error == nullptr)
            file.setPermissions(file.permissions() | QFile::ExeOwner);
    }

    /// Lets the list hang in so many scans at once; returns the tools' process ids.
    QList<pid_t> hang(int scans)
    {
        const QString file = m_tools.filePath(QStringLiteral("pids"));
        const QByteArray script = "echo $$ >>'" + file.toLocal8Bit() + "'; exec sleep 1000";
        breakTool(Task::list, {"hanging", script.constData()});
        for (int i = 0; i < scans; ++i)
            store->refreshPorts();
        QList<pid_t> pids;
        EXPECT_TRUE(waitUntil([&] {
            QFile in(file);
            if (in.open(QIODevice::ReadOnly) && in.size() > 0) {
                pids.clear();
                for (const QByteArray &line : in.readAll().trimmed().split('\n'))
                    pids.append(line.toInt());
            }
            return pids.size() == scans;
        }));
        QFile::remove(file);
        mend(Task::list);
        return pids;
    }

    void mend(Task task) const
    {
        QFile::remove(path(task));
        ASSERT_TRUE(QFile::link(real(task), path(task)));
    }

private:
    QString path(Task task) const
    {
        return m_tools.filePath(task == Task::kill           ? QStringLiteral("kill")
                                : task == Task::processFacts ? QStringLiteral("ps")
                                                             : QStringLiteral("lsof"));
    }

    static QString real(Task task)
    {
        const ToolTable table = realSystem().toolTable;
        return presentTool(task == Task::kill           ? table.kill
                           : task == Task::processFacts ? table.ps
                                                        : table.lsof);
    }

    const QTemporaryDir m_tools;
};

class BrokenTool : public BrokenTools, public testing::WithParamInterface<ToolFault>
{
};

} // namespace

TEST_F(BrokenTools, thatHangLeaveTheOtherScansAlone)
{
    const auto server = serve();
    start(system());
    const QList<pid_t> hanging = hang(pool.maxThreadCount() - 1);
    const auto another = serve();
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(tellsTheTruthAbout(*server));
    EXPECT_TRUE(tellsTheTruthAbout(*another));
    EXPECT_TRUE(killEnds(*another));
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(rowsOf(*another).isEmpty());
    EXPECT_TRUE(tellsTheTruthAbout(*server));

    for (const pid_t pid : hanging)
        EXPECT_EQ(::kill(pid, SIGKILL), 0);
    ASSERT_TRUE(waitUntil([this] { return pool.activeThreadCount() == 0; }));
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(tellsTheTruthAbout(*server));
}

TEST_F(BrokenTools, thatHangInEveryThreadHoldUpScansUntilTheyEndAndNoKill)
{
    const auto server = serve();
    const auto another = serve();
    start(system());
    const QList<pid_t> hanging = hang(pool.maxThreadCount());
    store->refreshPorts();
    EXPECT_TRUE(killEnds(*another));
    EXPECT_TRUE(tellsTheTruthAbout(*server)) << "the last good list stays";

    for (const pid_t pid : hanging)
        EXPECT_EQ(::kill(pid, SIGKILL), 0);
    ASSERT_TRUE(waitUntil([this] { return pool.activeThreadCount() == 0; }));
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(tellsTheTruthAbout(*server));
    EXPECT_TRUE(rowsOf(*another).isEmpty());
}

TEST_P(BrokenTool, ofTheListCostsOneScan)
{
    const auto server = serve();
    start(system());
    ASSERT_TRUE(tellsTheTruthAbout(*server));

    breakTool(Task::list, GetParam());
    ASSERT_TRUE(refresh());
    if (GetParam().error == nullptr) {
        EXPECT_EQ(store->lastError(), std::nullopt);
        EXPECT_TRUE(rowsOf(*server).isEmpty());
    } else {
        ASSERT_TRUE(store->lastError());
        EXPECT_TRUE(store->lastError()->endsWith(QLatin1String(GetParam().error)))
            << store->lastError()->toStdString();
        EXPECT_EQ(rowsOf(*server).size(), 1) << "the list before it stays";
    }

    mend(Task::list);
    ASSERT_TRUE(refresh());
    EXPECT_TRUE(tellsTheTruthAbout(*server));
}

TEST_P(BrokenTool, ofTheDetailsCostsThemAndNoRow)
{
    const auto server = serve();
    start(system());
    for (const Task task : {Task::processFacts, Task::folder}) {
        if (task == Task::folder && GetParam().error != nullptr)
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
