#include "libexec/holders/Forwarders.h"

#include "libexec/holders/DockerProxy.h"
#include "libexec/proc/Arguments.h"
#include "libexec/proc/Descriptor.h"
#include "libexec/proc/ProcFiles.h"
#include "libexec/proc/ProcessStat.h"

namespace tidewick::libexec
{

Forwarders::Forwarders(int proc, HiddenProcesses &hidden)
{
    std::string text;
    for (const int pid : hidden.of(0)) {
        const std::string path = std::to_string(pid);
        if (!readFile(proc, (path + "/comm").c_str(), text) || text != "docker-proxy\n")
            continue;
        const Descriptor process(openDirectory(proc, path.c_str()));
        if (!process.isOpen() || !readFile(process.value(), "status", text) ||
            statusValue(text, "Uid") != "0\t0\t0\t0" || !hidden.isInOwnNetwork(pid))
            continue;
        text = readCommandLine(process.value(), "");
        if (const auto asked = forwardedSocket(splitArguments(text)))
            m_forwarders.push_back({pid, *asked});
    }
}

std::set<int> Forwarders::of(const ListeningSocket &socket) const
{
    std::set<int> exact;
    std::set<int> wildcard;
    for (const Forwarder &forwarder : m_forwarders) {
        const ProxyMatch match = matchForwarder(forwarder.asked, socket);
        if (match != ProxyMatch::none)
            (match == ProxyMatch::exact ? exact : wildcard).insert(forwarder.pid);
    }
    return exact.empty() ? wildcard : exact;
}

} // namespace tidewick::libexec
