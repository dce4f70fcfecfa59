#include "tests/faults/BrokenTools.h"

#include "scan/ProcessToolRunner.h"
#include "scan/http/CurlHttpClient.h"
#include "tests/support/WaitUntil.h"

#include <QFile>

#include <csignal>

using namespace tidewick;

BrokenTools::BrokenTools() : m_faultyTool(programs.copy(FAULTY_TOOL))
{
    giveToOrdinaryUser(m_tools.path());
    for (const Task task : {Task::list, Task::processFacts, Task::kill})
        mend(task);
}

SystemInterfaces BrokenTools::system() const
{
    const ToolTable table{{path(Task::list)}, {path(Task::processFacts)}, {path(Task::kill)}};
    return {std::make_shared<ProcessToolRunner>(), table, std::make_shared<CurlHttpClient>()};
}

void BrokenTools::breakTool(Task task, const ToolFault &fault) const
{
    QFile::remove(path(task));
    if (fault.script == nullptr)
        return;
    QFile file(path(task));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    // A kill that half works works.
    const QString own = task == Task::kill ? QStringLiteral("/bin/echo") : real(task);
    file.write("#!/bin/sh\nreal='" + own.toLocal8Bit() + "' faulty='" + m_faultyTool.c_str() +
               "'\n");
    // lsof has two of the tasks.
    if (task == Task::list || task == Task::directory)
        file.write(QByteArray("if [ \"$1\" != ") + (task == Task::list ? "-i" : "-p") +
                   " ]; then exec \"$real\" \"$@\"; fi\n");
    file.write(fault.script);
    if (fault.startError == nullptr)
        file.setPermissions(file.permissions() | QFile::ExeOwner);
}

void BrokenTools::mend(Task task) const
{
    QFile::remove(path(task));
    ASSERT_TRUE(QFile::link(real(task), path(task)));
}

void BrokenTools::letHang(Task task) const
{
    const QByteArray script = "echo $$ >>'" + pidFile().toLocal8Bit() + "'; exec sleep 1000";
    breakTool(task, {"hanging", script.constData()});
}

QList<pid_t> BrokenTools::hangingTools(int count) const
{
    QList<pid_t> pids;
    EXPECT_TRUE(waitUntil([&] {
        QFile in(pidFile());
        if (in.open(QIODevice::ReadOnly) && in.size() > 0) {
            pids.clear();
            for (const QByteArray &line : in.readAll().trimmed().split('\n'))
                pids.append(line.toInt());
        }
        return pids.size() == count;
    }));
    return pids;
}

QList<pid_t> BrokenTools::hang(int scans, Task task)
{
    // The thread of a scan that has ended is free a moment later.
    EXPECT_TRUE(waitUntil([this] { return workers.scans.activeThreadCount() == 0; }));
    letHang(task);
    for (int i = 0; i < scans; ++i)
        store->refreshPorts();
    QList<pid_t> tools = hangingTools(scans);
    mend(task);
    return tools;
}

void BrokenTools::endHanging(const QList<pid_t> &tools)
{
    for (const pid_t pid : tools)
        EXPECT_EQ(::kill(pid, SIGKILL), 0);
    endEveryScan();
}

QString BrokenTools::real(Task task) const
{
    const ToolTable table = realTools();
    return presentTool(task == Task::kill           ? table.kill
                       : task == Task::processFacts ? table.ps
                                                    : table.lsof);
}

QString BrokenTools::path(Task task) const
{
    return m_tools.filePath(task == Task::kill           ? QStringLiteral("kill")
                            : task == Task::processFacts ? QStringLiteral("ps")
                                                         : QStringLiteral("lsof"));
}
