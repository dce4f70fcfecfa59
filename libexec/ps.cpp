// The supplied ps: what ps(1) prints for the three argument lists that the application uses,
// without a walk over all processes. Any other argument is refused. It runs three times for each
// listener, so it takes nothing that would have to start first: no memory at run time, no locale.
#include "libexec/cells/ProcessCells.h"
#include "libexec/proc/Descriptor.h"
#include "libexec/proc/Words.h"

#include <array>
#include <climits>
#include <csignal>
#include <cstdlib>

#include <sys/time.h>
#include <unistd.h>

using namespace tidewick::libexec;

namespace
{

struct Query
{
    std::string_view format;
    bool (*addCells)(TextBuffer &line, int pid);
};

constexpr std::array<Query, 3> queries{
    {{"command=", addCommand}, {"rss=,%cpu=", addMemoryAndCpu}, {"etime=", addElapsedTime}}};

/// SIGALRM ends this program in half a second. A reader of locked memory waits for ever, and
/// nothing but its own end ends that. Whoever started this may have blocked or ignored the signal.
void endSoon()
{
    sigset_t alarm;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);
    signal(SIGALRM, SIG_DFL);
    itimerval timer{};
    timer.it_value.tv_usec = 500'000;
    setitimer(ITIMER_REAL, &timer, nullptr);
}

bool answer(const Query &query, int pid)
{
    static std::array<char, commandLineLimit + 1> memory;
    TextBuffer line(memory);
    endSoon();
    if (!query.addCells(line, pid))
        return false;
    line.add('\n');
    return writeAll(STDOUT_FILENO, line.view());
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc == 5 && std::string_view(argv[1]) == "-p" && std::string_view(argv[3]) == "-o") {
        const auto pid = parseNumber(argv[2]);
        for (const Query &query : queries) {
            if (query.format == argv[4] && pid && *pid > 0 && *pid <= INT_MAX)
                return answer(query, int(*pid)) ? EXIT_SUCCESS : EXIT_FAILURE;
        }
    }
    writeAll(STDERR_FILENO,
             "ps: only \"-p PID -o\" with \"command=\", \"rss=,%cpu=\" or \"etime=\" "
             "is known here\n");
    return EXIT_FAILURE;
}
