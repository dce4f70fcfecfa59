#include "scan/ProcessToolRunner.h"

#include "scan/Logging.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace tidewick
{
namespace
{

/// Tools that take longer, and those that fail, are named in the log.
constexpr qint64 slowMs = 200;

/// Why the program cannot be started, or 0. QProcess would find that too, and lose a descriptor
/// each time (Qt 6.4): a tool that is missing is asked for in each scan.
int startError(const QString &program)
{
    const QByteArray path = QFile::encodeName(program);
    struct stat file = {};
    if (stat(path.constData(), &file) != 0 || access(path.constData(), X_OK) != 0)
        return errno;
    return S_ISREG(file.st_mode) ? 0 : EACCES;
}

ToolStartError notStarted(const QString &program, const QString &reason)
{
    return ToolStartError(program + QStringLiteral(": ") + reason);
}

class FileDescriptor
{
public:
    explicit FileDescriptor(int value) : m_value(value) {}
    ~FileDescriptor() { close(m_value); }
    Q_DISABLE_COPY_MOVE(FileDescriptor)

    int value() const { return m_value; }

private:
    int m_value;
};

/// A handle of a running child (pidfd_open(2)). A kill through it never hits a reused pid, however
/// late it comes. It is readable once the child has ended.
class ChildHandle : public FileDescriptor
{
public:
    explicit ChildHandle(qint64 pid)
        : FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, static_cast<pid_t>(pid), 0)))
    {
    }

    bool isOpen() const { return value() >= 0; }
    void kill() const { syscall(SYS_pidfd_send_signal, value(), SIGKILL, nullptr, 0U); }
};

/// Adds what the pipe holds now.
void readAvailable(int pipe, QByteArray &output)
{
    std::array<char, 65536> buffer;
    while (output.size() <= ProcessToolRunner::outputLimit) {
        const ssize_t count = read(pipe, buffer.data(), buffer.size());
        if (count <= 0)
            return;
        output.append(buffer.data(), count);
    }
}

/// Reads standard output until the child has ended, and then what it has left in the pipe, but not
/// much more than `outputLimit`. Programs that hold the pipe beyond that are not awaited.
///
/// QProcess would read it too, but its waitForReadyRead() loses the output of a child that prints
/// and ends while poll(2) is between the pipe and the child (Qt 6.4).
QByteArray readToTheEnd(int pipe, const ChildHandle &child)
{
    QByteArray output;
    bool hasEnded = false;
    while (!hasEnded && output.size() <= ProcessToolRunner::outputLimit) {
        std::array<pollfd, 2> waiting{{{pipe, POLLIN, 0}, {child.value(), POLLIN, 0}}};
        if (child.isOpen())
            poll(waiting.data(), waiting.size(), -1);
        // The child prints nothing after this. One without a handle has ended long ago.
        hasEnded = !child.isOpen() || waiting[1].revents != 0;
        readAvailable(pipe, output);
    }
    return output;
}

} // namespace

ToolResult ProcessToolRunner::run(const QString &program, const QStringList &arguments,
                                  const std::stop_token &stop) const
{
    QElapsedTimer duration;
    duration.start();
    if (const int error = startError(program); error != 0)
        throw notStarted(program, qt_error_string(error));
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        throw notStarted(program, qt_error_string(errno));
    const FileDescriptor reading(ends[0]);
    // Open until the child has ended: a pipe without it would end each wait for the child at once.
    const FileDescriptor writing(ends[1]);
    fcntl(reading.value(), F_SETFL, O_NONBLOCK);
    QProcess child;
    child.setStandardInputFile(QProcess::nullDevice());
    child.setStandardErrorFile(QProcess::nullDevice());
    child.setProcessChannelMode(QProcess::ForwardedOutputChannel);
    child.setChildProcessModifier([parent = getpid(), output = writing.value()] {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent || dup2(output, STDOUT_FILENO) < 0)
            _exit(EXIT_FAILURE);
    });
    child.start(program, arguments, QIODevice::ReadOnly);
    if (!child.waitForStarted(-1))
        throw notStarted(program, child.errorString());

    const ChildHandle handle(child.processId());
    // If Qt has already reaped a quick child, there is nothing left to kill. Otherwise ~QProcess()
    // ends it.
    if (!handle.isOpen() && errno != ESRCH)
        throw notStarted(program, qt_error_string(errno));
    const std::stop_callback killWhenStopped(stop, [&handle] { handle.kill(); });
    const QByteArray output = readToTheEnd(reading.value(), handle);
    const bool isTruncated = output.size() > outputLimit;
    if (isTruncated)
        handle.kill();
    child.waitForFinished(-1);
    const bool exited = child.exitStatus() == QProcess::NormalExit;
    const int status = exited ? child.exitCode() : -1;
    if (duration.elapsed() > slowMs || status != 0)
        qCDebug(scanLog) << "tool" << program << arguments << "ended with" << status << "after"
                         << duration.elapsed() << "ms";
    return {output.left(outputLimit), status, isTruncated};
}

} // namespace tidewick
