#pragma once

#include <sys/socket.h>
#include <sys/types.h>

namespace tidewick
{

/// Whether a connection to this loopback address would reach another person's listener. Such a one
/// may stand beside a server of ours, on its port of another address, to answer for it or to keep a
/// probe waiting. False where the kernel does not tell.
bool isAnotherPersons(const sockaddr &address);

/// The rule: root and services are no persons, and root may see what everybody runs.
bool isAnotherPerson(uid_t owner, uid_t viewer);

} // namespace tidewick
