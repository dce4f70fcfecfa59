// The supplied ps: what ps(1) prints for the three argument lists that the application uses,
// without a walk over all processes. Any other argument is refused.
#include "libexec/cells/ProcessCells.h"
#include "libexec/proc/Descriptor.h"
#include "libexec/proc/Words.h"

#include <climits>
#include <clocale>
#include <cstdio>
#include <cstdlib>

#include <unistd.h>

using namespace tidewick::tools;

int main(int argc, char *argv[])
{
    struct Query
    {
        std::string_view format;
        std::string (*line)(int pid);
    };
    constexpr Query queries[] = {
        {"command=", commandCell}, {"rss=,%cpu=", memoryAndCpuCells}, {"etime=", elapsedCell}};

    if (argc == 5 && std::string_view(argv[1]) == "-p" && std::string_view(argv[3]) == "-o") {
        const auto pid = parseNumber(argv[2]);
        for (const Query &query : queries) {
            if (query.format != argv[4] || !pid || *pid == 0 || *pid > INT_MAX)
                continue;
            // NOLINTNEXTLINE(concurrency-mt-unsafe): this program has one thread
            setlocale(LC_CTYPE, "");
            const std::string line = query.line(int(*pid));
            return !line.empty() && writeAll(STDOUT_FILENO, line) ? EXIT_SUCCESS : EXIT_FAILURE;
        }
    }
    std::fputs("ps: only \"-p PID -o\" with \"command=\", \"rss=,%cpu=\" or \"etime=\" is known "
               "here\n",
               stderr);
    return EXIT_FAILURE;
}
