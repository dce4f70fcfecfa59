#include "tests/support/system/Users.h"

#include <QtGlobal>

#include <grp.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

/// Asks the kernel, in a child.
bool mayBecome(uid_t user)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(setgroups(0, nullptr) == 0 && setgid(user) == 0 && setuid(user) == 0 ? 0 : 1);
    int status = -1;
    return child > 0 && waitpid(child, &status, 0) == child && status == 0;
}

void become(uid_t user)
{
    if (setresgid(user, user, 0) != 0 || setresuid(user, user, 0) != 0)
        qFatal("this process cannot become user %u", user);
    prctl(PR_SET_DUMPABLE, 1); // or /proc/self is root's
}

} // namespace

bool isRealRoot()
{
    if (geteuid() != 0)
        return false;
    static const bool hasOtherUsers = mayBecome(ordinaryUser);
    return hasOtherUsers;
}

OrdinaryUser::OrdinaryUser(uid_t user) : m_isRoots(isRealRoot())
{
    if (m_isRoots)
        become(user);
}

OrdinaryUser::~OrdinaryUser()
{
    if (!m_isRoots)
        return;
    // The user's id first: only root may change the group to any.
    if (setresuid(0, 0, 0) != 0 || setresgid(0, 0, 0) != 0)
        qFatal("this process cannot become root again");
    prctl(PR_SET_DUMPABLE, 1);
}
