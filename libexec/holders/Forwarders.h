#pragma once

#include "libexec/holders/HiddenProcesses.h"
#include "libexec/sockets/ListeningSocket.h"

#include <set>
#include <vector>

namespace tidewick::libexec
{

/// Docker's forwarders, each of which listens where its arguments say.
class Forwarders
{
public:
    /// Of root's processes, in the directory /proc. A program that runs as root only by its
    /// set-user-id bit has the arguments that its caller chose, and does not count. Nor does one in
    /// another network: a container may run forwarders of its own, for the same ports.
    Forwarders(int proc, HiddenProcesses &hidden);

    /// The ones that were told to listen there. An exact address comes before a wildcard.
    std::set<int> of(const ListeningSocket &socket) const;

private:
    struct Forwarder
    {
        int pid = 0;
        ListeningSocket asked;
    };
    std::vector<Forwarder> m_forwarders;
};

} // namespace tidewick::libexec
