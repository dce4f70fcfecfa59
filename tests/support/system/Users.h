#pragma once

#include <sys/types.h>

/// "nobody", and "nogroup" as a group.
constexpr uid_t ordinaryUser = 65534;

/// Whether this process may act as any other user. The root of a user namespace that holds one user
/// has the id 0, too, and may not.
bool isRealRoot();

/// While it lives, this process belongs to `user` where it is root's: limits and permissions hold
/// it then. Where it is not, it stays as it is.
class OrdinaryUser
{
public:
    explicit OrdinaryUser(uid_t user = ordinaryUser);
    ~OrdinaryUser();
    OrdinaryUser(const OrdinaryUser &) = delete;
    OrdinaryUser &operator=(const OrdinaryUser &) = delete;

private:
    const bool m_isRoots;
};
