#include "platform/session/DirectoryCheck.h"

#include <QFile>
#include <QSocketNotifier>
#include <QTimer>

#include <csignal>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace tidewick
{
namespace
{

/// In the child: only what is safe after fork(2) in a process with threads.
[[noreturn]] void askFileSystem(const char *path)
{
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        signal(number, SIG_DFL);
    close_range(0, ~0U, 0);
    struct stat status = {};
    _exit(stat(path, &status) == 0 && S_ISDIR(status.st_mode) ? EXIT_SUCCESS : EXIT_FAILURE);
}

/// A child that asks, known by its pidfd(2). Goes when the child has ended or with its parent.
class Asker : public QObject
{
public:
    using Ended = std::function<void(bool isDirectory)>;

    Asker(int child, Ended ended, QObject *parent)
        : QObject(parent),
          m_child(child),
          m_ended(std::move(ended)),
          m_notifier(child, QSocketNotifier::Read)
    {
        connect(&m_notifier, &QSocketNotifier::activated, this, [this] {
            m_ended(hasExitedWell());
            deleteLater();
        });
    }
    ~Asker() override
    {
        kill();
        m_notifier.setEnabled(false);
        close(m_child);
    }
    Q_DISABLE_COPY_MOVE(Asker)

    void kill() const { syscall(SYS_pidfd_send_signal, m_child, SIGKILL, nullptr, 0); }

private:
    bool hasExitedWell() const
    {
        siginfo_t info = {};
        return waitid(P_PIDFD, static_cast<id_t>(m_child), &info, WEXITED | WNOHANG) == 0 &&
               info.si_code == CLD_EXITED && info.si_status == EXIT_SUCCESS;
    }

    const int m_child;
    const Ended m_ended;
    QSocketNotifier m_notifier;
};

/// The pidfd of a child that asks about `path`, or -1. Nobody would wait for a child without a
/// pidfd, so there must be room for one before the child starts.
int startAsker(const QByteArray &path)
{
    const int room = eventfd(0, EFD_CLOEXEC);
    if (room < 0)
        return -1;
    const pid_t child = fork();
    if (child == 0)
        askFileSystem(path.constData());
    close(room);
    return child < 0 ? -1 : static_cast<int>(syscall(SYS_pidfd_open, child, 0));
}

} // namespace

void DirectoryCheck::start(const QString &path, Answer answer)
{
    const bool isPossible = !m_unanswered.contains(path) && m_unanswered.size() < mostAtOnce;
    const int child = isPossible ? startAsker(QFile::encodeName(path)) : -1;
    if (child < 0) {
        QTimer::singleShot(0, this, [answer = std::move(answer)] { answer(false); });
        return;
    }
    m_unanswered.insert(path);
    auto *const limit = new QTimer(this);
    auto *const asker = new Asker(
        child,
        [this, path, limit, answer](bool isDirectory) {
            m_unanswered.remove(path);
            if (!limit->isActive())
                return; // answered when it expired
            limit->stop();
            answer(isDirectory);
        },
        this);
    limit->setParent(asker);
    limit->setSingleShot(true);
    limit->callOnTimeout(asker, [asker, answer] {
        asker->kill();
        answer(false);
    });
    limit->start(timeout);
}

} // namespace tidewick
