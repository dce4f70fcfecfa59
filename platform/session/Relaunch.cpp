#include "platform/session/Relaunch.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tidewick
{
namespace
{

constexpr int processDescriptor = 3;

/// Runs in the new process and does only what is safe after fork(2) in a process with threads. It
/// closes every descriptor of the old process, because a connection ends with its last holder.
[[noreturn]] void startAfter(int oldProcess, const char *path)
{
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        signal(number, SIG_DFL);
    setsid();
    dup2(oldProcess, processDescriptor);
    close_range(processDescriptor + 1, ~0U, 0);
    struct pollfd ended = {processDescriptor, POLLIN, 0};
    while (poll(&ended, 1, -1) < 0 && errno == EINTR) {
    }
    close(processDescriptor);
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr);
    execl(path, path, nullptr);
    _exit(127);
}

} // namespace

bool relaunchAfterExit(const QString &path)
{
    if (!QFileInfo(path).isExecutable())
        return false;
    const QByteArray program = QFile::encodeName(path);
    const int thisProcess = static_cast<int>(syscall(SYS_pidfd_open, getpid(), 0));
    if (thisProcess < 0)
        return false;
    const pid_t child = fork();
    if (child == 0)
        startAfter(thisProcess, program.constData());
    close(thisProcess);
    return child > 0;
}

bool isReplaced(const QString &path)
{
    struct stat running = {};
    struct stat present = {};
    return stat("/proc/self/exe", &running) == 0 &&
           stat(QFile::encodeName(path).constData(), &present) == 0 &&
           (running.st_dev != present.st_dev || running.st_ino != present.st_ino);
}

} // namespace tidewick
