#pragma once

#include <QtGlobal>

#include <csignal>
#include <ctime>

namespace tidewick
{

/// Keeps a write to a connection that is gone from ending the program, whichever TLS library it
/// happens in. The signal of such a write goes to the writing thread alone.
class BrokenPipeGuard
{
public:
    BrokenPipeGuard()
    {
        sigemptyset(&m_brokenPipe);
        sigaddset(&m_brokenPipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &m_brokenPipe, &m_maskBefore);
    }
    ~BrokenPipeGuard()
    {
        if (sigismember(&m_maskBefore, SIGPIPE) == 0) {
            const timespec now{};
            sigtimedwait(&m_brokenPipe, nullptr, &now);
        }
        pthread_sigmask(SIG_SETMASK, &m_maskBefore, nullptr);
    }
    Q_DISABLE_COPY_MOVE(BrokenPipeGuard)

private:
    sigset_t m_brokenPipe;
    sigset_t m_maskBefore;
};

} // namespace tidewick
