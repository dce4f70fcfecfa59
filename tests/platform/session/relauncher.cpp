#include "platform/session/Relaunch.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>

// relauncher PROGRAM - has PROGRAM started after its own end, which comes with that of its input.
// It holds descriptors and blocks a signal, and PROGRAM must not inherit that.
int main(int /*argc*/, char *argv[])
{
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    for (int count = 0; count < 20; ++count)
        open("/dev/null", O_RDONLY);
    std::puts(tidewick::relaunchAfterExit(QString::fromLocal8Bit(argv[1])) ? "yes" : "no");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    return 0;
}
