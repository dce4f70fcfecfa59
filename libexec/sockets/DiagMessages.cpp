#include "libexec/sockets/DiagMessages.h"

#include <algorithm>
#include <cstring>

#include <arpa/inet.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <netinet/tcp.h>

namespace tidewick::libexec
{
namespace
{

/// What the last message of a dump tells: an error where the kernel cannot make it, as without its
/// module tcp_diag.
DiagEnd dumpResult(const char *body, size_t length)
{
    int result = 0;
    if (length >= sizeof result)
        memcpy(&result, body, sizeof result);
    return result < 0 ? DiagEnd::error : DiagEnd::done;
}

} // namespace

DiagEnd parseDiagMessages(const char *buffer, size_t size, std::vector<ListeningSocket> &sockets)
{
    // The kernel's macros cast to and fro; offsets say the same without a misaligned pointer.
    size_t offset = 0;
    while (size - offset >= sizeof(nlmsghdr)) {
        nlmsghdr header;
        memcpy(&header, buffer + offset, sizeof header);
        if (header.nlmsg_len < sizeof header || header.nlmsg_len > size - offset)
            return DiagEnd::error;
        if ((header.nlmsg_flags & NLM_F_DUMP_INTR) != 0)
            return DiagEnd::interrupted;
        const char *const body = buffer + offset + NLMSG_HDRLEN;
        const size_t length = header.nlmsg_len - NLMSG_HDRLEN;
        if (header.nlmsg_type == NLMSG_DONE)
            return dumpResult(body, length);
        if (header.nlmsg_type == NLMSG_ERROR)
            return DiagEnd::error;
        inet_diag_msg message;
        if (length < sizeof message)
            return DiagEnd::error;
        memcpy(&message, body, sizeof message);

        ListeningSocket socket;
        socket.inode = message.idiag_inode;
        socket.user = message.idiag_uid;
        socket.port = ntohs(message.id.idiag_sport);
        socket.isIpv6 = message.idiag_family == AF_INET6;
        memcpy(socket.address, message.id.idiag_src, socket.isIpv6 ? 16 : 4);
        for (size_t at = NLMSG_ALIGN(sizeof message); at + sizeof(rtattr) <= length;) {
            rtattr attribute;
            memcpy(&attribute, body + at, sizeof attribute);
            if (attribute.rta_len < sizeof attribute || attribute.rta_len > length - at)
                break;
            if (attribute.rta_type == INET_DIAG_CGROUP_ID &&
                attribute.rta_len >= RTA_LENGTH(sizeof socket.cgroup))
                memcpy(&socket.cgroup, body + at + RTA_LENGTH(0), sizeof socket.cgroup);
            at += RTA_ALIGN(attribute.rta_len);
        }
        if (message.idiag_state == TCP_LISTEN)
            sockets.push_back(socket);
        offset += std::min<size_t>(NLMSG_ALIGN(header.nlmsg_len), size - offset);
    }
    return DiagEnd::more;
}

} // namespace tidewick::libexec
