#include "tests/support/system/Namespaces.h"

#include <string>

#include <fcntl.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

bool writeFile(const char *path, const std::string &text)
{
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    const bool isWritten = write(file, text.data(), text.size()) == ssize_t(text.size());
    close(file);
    return isWritten;
}

/// A map with one line: the id stands for itself.
std::string onlyItself(unsigned id)
{
    return std::to_string(id) + ' ' + std::to_string(id) + " 1";
}

} // namespace

bool enterNamespaces(int flags)
{
    const uid_t user = geteuid();
    const gid_t group = getegid();
    if (unshare(flags) == 0)
        return true;
    return unshare(CLONE_NEWUSER | flags) == 0 && writeFile("/proc/self/setgroups", "deny") &&
           writeFile("/proc/self/uid_map", onlyItself(user)) &&
           writeFile("/proc/self/gid_map", onlyItself(group));
}

bool enterOwnNetwork()
{
    if (!enterNamespaces(CLONE_NEWNET))
        return false;
    ifreq loopback{};
    loopback.ifr_name[0] = 'l';
    loopback.ifr_name[1] = 'o';
    loopback.ifr_flags = IFF_UP;
    const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const bool isUp = ioctl(descriptor, SIOCSIFFLAGS, &loopback) == 0;
    close(descriptor);
    return isUp;
}
