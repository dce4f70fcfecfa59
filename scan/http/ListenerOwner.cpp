#include "scan/http/ListenerOwner.h"

#include "products/Users.h"

#include <array>
#include <cstring>
#include <optional>

#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <unistd.h>

namespace tidewick
{
namespace
{

/// The kernel gives the loopback interface this number in each network namespace. A listener that
/// is bound to it is not found without.
constexpr uint32_t loopbackInterface = 1;

struct Question
{
    nlmsghdr header;
    inet_diag_req_v2 request;
};

/// Asks which listener a connection to the address would reach (sock_diag(7)). Only a listener has
/// no peer, as in this question.
Question questionAbout(const sockaddr &address)
{
    Question question{};
    question.header.nlmsg_len = sizeof question;
    question.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    question.header.nlmsg_flags = NLM_F_REQUEST;
    inet_diag_req_v2 &request = question.request;
    request.sdiag_family = AF_INET;
    request.sdiag_protocol = IPPROTO_TCP;
    request.id.idiag_if = loopbackInterface;
    request.id.idiag_cookie[0] = INET_DIAG_NOCOOKIE;
    request.id.idiag_cookie[1] = INET_DIAG_NOCOOKIE;
    if (address.sa_family == AF_INET) {
        const auto &ipv4 = reinterpret_cast<const sockaddr_in &>(address);
        request.id.idiag_sport = ipv4.sin_port;
        memcpy(request.id.idiag_src, &ipv4.sin_addr, sizeof ipv4.sin_addr);
        return question;
    }
    const auto &ipv6 = reinterpret_cast<const sockaddr_in6 &>(address);
    request.id.idiag_sport = ipv6.sin6_port;
    if (IN6_IS_ADDR_V4MAPPED(&ipv6.sin6_addr)) {
        memcpy(request.id.idiag_src, &ipv6.sin6_addr.s6_addr[12], sizeof(in_addr));
        return question;
    }
    request.sdiag_family = AF_INET6;
    memcpy(request.id.idiag_src, &ipv6.sin6_addr, sizeof ipv6.sin6_addr);
    return question;
}

std::optional<uid_t> listenerOwner(const sockaddr &address)
{
    const int netlink = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG);
    const Question question = questionAbout(address);
    std::array<char, 4096> answer;
    const bool isAsked = send(netlink, &question, sizeof question, 0) == sizeof question;
    // The answer is there before send() returns.
    const ssize_t size = isAsked ? recv(netlink, answer.data(), answer.size(), MSG_DONTWAIT) : -1;
    close(netlink);
    nlmsghdr header;
    inet_diag_msg found;
    if (size < ssize_t(NLMSG_HDRLEN + sizeof found))
        return std::nullopt;
    memcpy(&header, answer.data(), sizeof header);
    memcpy(&found, answer.data() + NLMSG_HDRLEN, sizeof found);
    return header.nlmsg_type == SOCK_DIAG_BY_FAMILY ? std::optional<uid_t>(found.idiag_uid)
                                                    : std::nullopt;
}

} // namespace

bool isAnotherPersons(const sockaddr &address)
{
    const auto owner = listenerOwner(address);
    return owner && isAnotherPerson(*owner, geteuid());
}

bool isAnotherPerson(uid_t owner, uid_t viewer)
{
    return owner > lastServiceUser && owner != viewer && viewer != 0;
}

} // namespace tidewick
