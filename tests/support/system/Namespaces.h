#pragma once

/// Moves this process, which must have one thread, and the children that it starts from now on to
/// new namespaces: `flags` are those of unshare(2). An ordinary user needs a user namespace for
/// that and stays the same user in it; the children have no rights of root. False where the kernel
/// refuses.
bool enterNamespaces(int flags);

/// The same for a network that has nothing but a loopback device.
bool enterOwnNetwork();
