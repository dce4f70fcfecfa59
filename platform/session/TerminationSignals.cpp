#include "platform/session/TerminationSignals.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>
#include <sys/eventfd.h>
#include <unistd.h>

namespace tidewick
{
namespace
{

constexpr std::array<int, 3> signalNumbers{SIGINT, SIGTERM, SIGHUP};

/// The only thing that the handler touches: an eventfd(2) that wakes the main thread.
int wakeDescriptor = -1;

void wakeMainThread(int /*signalNumber*/)
{
    const int savedError = errno;
    if (const unsigned left = alarm(TerminationSignals::secondsToEnd); left > 0)
        alarm(left); // the first signal's
    const eventfd_t one = 1;
    [[maybe_unused]] const ssize_t written = write(wakeDescriptor, &one, sizeof one);
    errno = savedError;
}

void endProgram(int /*signalNumber*/)
{
    signal(SIGTERM, SIG_DFL);
    raise(SIGTERM);
}

void setHandlers(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int number : signalNumbers) {
        struct sigaction current = {};
        sigaction(number, nullptr, &current);
        if (current.sa_handler != SIG_IGN)
            sigaction(number, &action, nullptr);
    }
}

} // namespace

TerminationSignals::TerminationSignals(QObject *parent) : QObject(parent)
{
    wakeDescriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    auto *notifier = new QSocketNotifier(wakeDescriptor, QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        eventfd_t count = 0;
        eventfd_read(wakeDescriptor, &count);
        Q_EMIT received();
    });
    signal(SIGALRM, endProgram); // for good: a program that is stuck in its last lines ends, too
    setHandlers(wakeMainThread);
}

TerminationSignals::~TerminationSignals()
{
    setHandlers(SIG_DFL);
    close(wakeDescriptor);
}

} // namespace tidewick
