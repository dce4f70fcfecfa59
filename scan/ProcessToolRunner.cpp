#include "scan/ProcessToolRunner.h"

#include "scan/Logging.h"

#include <QElapsedTimer>
#include <QProcess>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace tidewick
{
namespace
{

/// A tool that takes longer is named in the log, and each one that fails.
constexpr qint64 slowMs = 200;

/// A handle of a running child (pidfd_open(2)). A kill through it never hits a reused pid, however
/// late it comes.
class ChildHandle
{
public:
    explicit ChildHandle(qint64 pid)
        : m_descriptor(static_cast<int>(syscall(SYS_pidfd_open, static_cast<pid_t>(pid), 0)))
    {
    }
    ~ChildHandle()
    {
        if (m_descriptor >= 0)
            close(m_descriptor);
    }
    Q_DISABLE_COPY_MOVE(ChildHandle)

    bool isValid() const { return m_descriptor >= 0; }
    void kill() const { syscall(SYS_pidfd_send_signal, m_descriptor, SIGKILL, nullptr, 0U); }

private:
    int m_descriptor;
};

/// Reads standard output until the child has ended. A child that prints more than `outputLimit` is
/// killed.
QByteArray readToTheEnd(QProcess &child, const ChildHandle &handle)
{
    QByteArray output;
    while (child.waitForReadyRead(-1)) {
        output += child.readAllStandardOutput();
        if (output.size() > ProcessToolRunner::outputLimit)
            handle.kill();
    }
    child.waitForFinished(-1);
    return output + child.readAllStandardOutput();
}

} // namespace

ToolResult ProcessToolRunner::run(const QString &program, const QStringList &arguments,
                                  const std::stop_token &stop) const
{
    QElapsedTimer duration;
    duration.start();
    QProcess child;
    child.setStandardInputFile(QProcess::nullDevice());
    child.setChildProcessModifier([parent = getpid()] {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent)
            _exit(EXIT_FAILURE);
    });
    child.start(program, arguments, QIODevice::ReadOnly);
    if (!child.waitForStarted(-1))
        throw ToolStartError(program + QStringLiteral(": ") + child.errorString());

    child.closeReadChannel(QProcess::StandardError); // what follows is discarded
    const ChildHandle handle(child.processId());
    const int reason = handle.isValid() ? 0 : errno;
    // If Qt has already reaped a quick child, there is nothing left to kill.
    if (!handle.isValid() && reason != ESRCH) {
        child.kill();
        child.waitForFinished(-1);
        throw ToolStartError(program + QStringLiteral(": ") + qt_error_string(reason));
    }
    const std::stop_callback killWhenStopped(stop, [&handle] { handle.kill(); });
    const QByteArray output = readToTheEnd(child, handle);
    const bool exited = child.exitStatus() == QProcess::NormalExit;
    const bool isTruncated = output.size() > outputLimit;
    const int status = exited ? child.exitCode() : -1;
    if (duration.elapsed() > slowMs || status != 0)
        qCDebug(scanLog) << "tool" << program << arguments << "ended with" << status << "after"
                         << duration.elapsed() << "ms";
    return {output.left(outputLimit), status, isTruncated};
}

} // namespace tidewick
