#include "platform/Relaunch.h"

#include <cstdio>

// relauncher PROGRAM - has PROGRAM started after its own end, which comes with that of its input.
int main(int /*argc*/, char *argv[])
{
    std::puts(tidewick::relaunchAfterExit(QString::fromLocal8Bit(argv[1])) ? "yes" : "no");
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    return 0;
}
