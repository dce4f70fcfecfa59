// The supplied lsof, all of it: what lsof(8) prints for the two argument lists that the application
// uses, with names that are not truncated. Any other argument is refused. lsof starts it.
#include "libexec/holders/Attribution.h"
#include "libexec/holders/Cgroups.h"
#include "libexec/holders/Holders.h"
#include "libexec/holders/RowOrder.h"
#include "libexec/proc/Descriptor.h"
#include "libexec/rows/DirectoryQuery.h"
#include "libexec/rows/SocketTable.h"
#include "libexec/rows/WorkingDirectory.h"
#include "libexec/sockets/SocketDump.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

using namespace tidewick::libexec;

namespace
{

using Arguments = std::vector<std::string_view>;

int listSockets()
{
    const auto sockets = listeningSockets();
    const Descriptor proc(openDirectory(AT_FDCWD, "/proc"));
    const Descriptor cgroups(openCgroupTree());
    SocketHolders found = findHolders(proc.value(), sockets);
    attributeHidden(found, sockets, proc.value(), cgroups.value());
    sortRows(found, sockets, proc.value(), geteuid());
    const std::string table = socketTable(found, sockets);
    return !table.empty() && writeAll(STDOUT_FILENO, table) ? EXIT_SUCCESS : EXIT_FAILURE;
}

int printWorkingDirectory(int pid)
{
    const std::string fields = workingDirectoryFields(pid);
    return !fields.empty() && writeAll(STDOUT_FILENO, fields) ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char *argv[])
{
    const Arguments arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    if (arguments == Arguments{"-i", "TCP", "-P", "-n", "-sTCP:LISTEN"})
        return listSockets();
    if (const auto pid = directoryQuery(argc, argv))
        return printWorkingDirectory(*pid);
    std::fputs("lsof: only \"-i TCP -P -n -sTCP:LISTEN\" and \"-p PID -a -d cwd -F n\" are known "
               "here\n",
               stderr);
    return EXIT_FAILURE;
}
