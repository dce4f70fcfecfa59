#include "libexec/holders/DockerProxy.h"

#include "libexec/proc/Arguments.h"
#include "libexec/proc/Words.h"

#include <cstring>

#include <arpa/inet.h>

namespace tidewick::libexec
{

std::optional<ListeningSocket> forwardedSocket(const std::vector<std::string_view> &arguments)
{
    const std::string host(optionValue(arguments, "host-ip"));
    const auto port = parseNumber(optionValue(arguments, "host-port"));
    ListeningSocket asked;
    asked.isIpv6 = host.find(':') != std::string::npos;
    if (optionValue(arguments, "proto") != "tcp" || !port || *port > UINT16_MAX ||
        inet_pton(asked.isIpv6 ? AF_INET6 : AF_INET, host.c_str(), asked.address) != 1)
        return std::nullopt;
    asked.port = uint16_t(*port);
    return asked;
}

ProxyMatch matchForwarder(const ListeningSocket &asked, const ListeningSocket &socket)
{
    if (asked.port != socket.port)
        return ProxyMatch::none;
    if (asked.isIpv6 == socket.isIpv6 &&
        memcmp(asked.address, socket.address, sizeof asked.address) == 0)
        return ProxyMatch::exact;
    // One that was asked for 0.0.0.0 may listen on :: for both families.
    return isUnspecified(asked) && isUnspecified(socket) ? ProxyMatch::wildcard : ProxyMatch::none;
}

} // namespace tidewick::libexec
