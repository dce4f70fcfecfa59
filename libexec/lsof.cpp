// The supplied lsof. It answers itself what is asked for each listener, a working directory, and
// leaves the rest to lsof-complete beside it. Most of that answer's cost is a program's start, so
// like ps it takes nothing that would have to start first: no memory at run time, no locale.
#include "libexec/cells/NumberCells.h"
#include "libexec/proc/Descriptor.h"
#include "libexec/rows/DirectoryQuery.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>

#include <unistd.h>

using namespace tidewick::libexec;

namespace
{

/// Whether the path is printed as it is. What must be escaped, or may be marked as deleted, is not.
bool isPlain(std::string_view path)
{
    return !path.ends_with(')') && std::all_of(path.begin(), path.end(), [](char c) {
        return c >= ' ' && c <= '~' && c != '\\';
    });
}

enum class Outcome { printed, failed, notPlain };

Outcome printDirectory(int pid)
{
    std::array<char, 32> linkMemory{};
    TextBuffer link(linkMemory);
    link.add("/proc/");
    addNumber(link, unsigned(pid));
    link.add("/cwd");

    std::array<char, PATH_MAX> path;
    const ssize_t size = readlink(linkMemory.data(), path.data(), path.size());
    if (size < 0)
        return Outcome::failed;
    const std::string_view directory(path.data(), size_t(size));
    if (directory.size() == path.size() || !isPlain(directory))
        return Outcome::notPlain;

    std::array<char, PATH_MAX + 32> memory;
    TextBuffer fields(memory);
    fields.add('p');
    addNumber(fields, unsigned(pid));
    fields.add("\nn");
    fields.add(directory);
    fields.add('\n');
    return writeAll(STDOUT_FILENO, fields.view()) ? Outcome::printed : Outcome::failed;
}

/// Becomes lsof-complete, which lies where this program does, even if a link led here.
int runComplete(char *argv[])
{
    std::array<char, PATH_MAX> self;
    const ssize_t size = readlink("/proc/self/exe", self.data(), self.size());
    const std::string_view program(self.data(), size_t(std::max<ssize_t>(size, 0)));
    std::array<char, PATH_MAX + 16> memory{};
    TextBuffer complete(memory);
    complete.add(program.substr(0, program.rfind('/') + 1));
    complete.add("lsof-complete");
    execv(memory.data(), argv);
    writeAll(STDERR_FILENO, "lsof: lsof-complete cannot be started\n");
    return EXIT_FAILURE;
}

} // namespace

int main(int argc, char *argv[])
{
    const auto pid = directoryQuery(argc, argv);
    const Outcome outcome = pid ? printDirectory(*pid) : Outcome::notPlain;
    if (outcome == Outcome::notPlain)
        return runComplete(argv);
    return outcome == Outcome::printed ? EXIT_SUCCESS : EXIT_FAILURE;
}
