#pragma once

#include "tests/faults/FaultTest.h"

#include <QList>
#include <QString>
#include <QTemporaryDir>

#include <sys/types.h>

/// The part of a scan, or of a kill, that a tool has.
enum class Task { list, processFacts, directory, kill };

struct ToolFault
{
    const char *name;
    /// What the tool does instead of its task, as a shell has it; null where it is missing.
    const char *script;
    /// The system's text where it cannot be started.
    const char *startError = nullptr;
    /// The end of the error that the scan has where this befalls its list.
    const char *listError = startError;
};

/// Tools in a directory of the test's own, each the real one until it is broken.
class BrokenTools : public FaultTest
{
protected:
    BrokenTools();

    tidewick::SystemInterfaces system() const;

    void breakTool(Task task, const ToolFault &fault) const;
    void mend(Task task) const;

    /// From now on the tool hangs at `task`, until it is mended.
    void letHang(Task task) const;
    /// The process ids of those that hang, once there are so many in all.
    QList<pid_t> hangingTools(int count) const;
    /// Lets so many scans hang at once, all in `task`, and no later one.
    QList<pid_t> hang(int scans, Task task = Task::list);
    /// Ends the tools that hang, and with them their scans.
    void endHanging(const QList<pid_t> &tools);

private:
    QString real(Task task) const;
    QString path(Task task) const;
    QString pidFile() const { return m_tools.filePath(QStringLiteral("pids")); }

    const QTemporaryDir m_tools;
    const std::string m_faultyTool;
};
