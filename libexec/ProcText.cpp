#include "libexec/ProcText.h"

#include <algorithm>
#include <array>
#include <cstring>

#include <arpa/inet.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <netinet/in.h>
#include <netinet/tcp.h>

namespace tidewick::tools
{
namespace
{

constexpr std::string_view deletedMark = " (deleted)";
constexpr unsigned listenState = TCP_LISTEN;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::string lowerCase(std::string_view text)
{
    std::string lower(text);
    for (char &c : lower) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

/// Takes the next word, up to a space, off the front of `text`.
std::string_view takeWord(std::string_view &text)
{
    const size_t start = std::min(text.find_first_not_of(' '), text.size());
    const size_t end = std::min(text.find(' ', start), text.size());
    const std::string_view word = text.substr(start, end - start);
    text.remove_prefix(end);
    return word;
}

std::string_view takeLine(std::string_view &text)
{
    const size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

std::optional<uint32_t> parseHex(std::string_view digits)
{
    if (digits.empty() || digits.size() > 8)
        return std::nullopt;
    uint32_t value = 0;
    for (const char c : digits) {
        if (!isDigit(c) && (c < 'A' || c > 'F'))
            return std::nullopt;
        value = value * 16 + uint32_t(isDigit(c) ? c - '0' : c - 'A' + 10);
    }
    return value;
}

/// "0100007F:1F90" of /proc/net/tcp: the address in 32-bit words of this machine's byte order.
bool parseTableAddress(std::string_view text, ListeningSocket &socket)
{
    const size_t words = socket.isIpv6 ? 4 : 1;
    if (text.size() != words * 8 + 5 || text[words * 8] != ':')
        return false;
    for (size_t i = 0; i < words; ++i) {
        const auto word = parseHex(text.substr(i * 8, 8));
        if (!word)
            return false;
        memcpy(socket.address + i * 4, &*word, 4);
    }
    const auto port = parseHex(text.substr(words * 8 + 1));
    if (!port)
        return false;
    socket.port = uint16_t(*port);
    return true;
}

bool isUnspecified(const ListeningSocket &socket)
{
    return std::all_of(std::begin(socket.address), std::end(socket.address),
                       [](uint8_t byte) { return byte == 0; });
}

bool isMappedIpv4(const ListeningSocket &socket)
{
    constexpr uint8_t prefix[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
    return socket.isIpv6 && memcmp(socket.address, prefix, sizeof prefix) == 0;
}

/// What the last message of a dump tells: an error where the kernel cannot make it, as without its
/// module tcp_diag.
DiagEnd dumpResult(const char *body, size_t length)
{
    int result = 0;
    if (length >= sizeof result)
        memcpy(&result, body, sizeof result);
    return result < 0 ? DiagEnd::error : DiagEnd::done;
}

/// node-22, node-20.1
bool isVersionedNode(std::string_view name)
{
    constexpr std::string_view prefix = "node-";
    return name.size() > prefix.size() && name.starts_with(prefix) &&
           name.find_first_not_of("0123456789.", prefix.size()) == std::string_view::npos;
}

bool isDynamicLoader(std::string_view name)
{
    if (!name.starts_with("ld-"))
        return false;
    const size_t suffix = name.rfind(".so");
    return suffix != std::string_view::npos &&
           (suffix + 3 == name.size() || name[suffix + 3] == '.');
}

/// The program that the dynamic loader was asked to run (ld.so(8)); empty where none is named.
std::string_view loaderOperand(const std::vector<std::string_view> &arguments)
{
    constexpr std::array<std::string_view, 7> withValue{
        "--library-path",      "--inhibit-rpath",       "--audit", "--preload", "--argv0",
        "--glibc-hwcaps-mask", "--glibc-hwcaps-prepend"};
    for (size_t i = 1; i < arguments.size(); ++i) {
        if (!arguments[i].starts_with("--"))
            return arguments[i];
        if (std::find(withValue.begin(), withValue.end(), arguments[i]) != withValue.end())
            ++i;
    }
    return {};
}

/// The value of an option written as -name VALUE, -name=VALUE, or with two hyphens.
std::string_view optionValue(const std::vector<std::string_view> &arguments, std::string_view name)
{
    for (size_t i = 1; i < arguments.size(); ++i) {
        std::string_view argument = arguments[i];
        if (!argument.starts_with('-'))
            continue;
        argument.remove_prefix(argument.starts_with("--") ? 2 : 1);
        if (!argument.starts_with(name))
            continue;
        argument.remove_prefix(name.size());
        if (argument.starts_with('='))
            return argument.substr(1);
        if (argument.empty() && i + 1 < arguments.size())
            return arguments[i + 1];
    }
    return {};
}

} // namespace

std::optional<uint64_t> parseNumber(std::string_view digits)
{
    if (digits.empty())
        return std::nullopt;
    uint64_t value = 0;
    for (const char c : digits) {
        if (!isDigit(c) || __builtin_mul_overflow(value, 10U, &value) ||
            __builtin_add_overflow(value, uint64_t(c - '0'), &value))
            return std::nullopt;
    }
    return value;
}

std::optional<ProcessStat> parseStat(std::string_view text)
{
    const size_t open = text.find('(');
    const size_t close = text.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open)
        return std::nullopt;
    ProcessStat stat;
    stat.comm = text.substr(open + 1, close - open - 1);
    std::string_view rest = text.substr(close + 1);
    // proc(5) counts from 1: the state is field 3.
    constexpr int last = 22;
    for (int field = 3; field <= last; ++field) {
        const std::string_view word = takeWord(rest);
        if (field == 3) {
            if (word.size() != 1)
                return std::nullopt;
            stat.state = word[0];
            continue;
        }
        if (field != 4 && field != 14 && field != 15 && field != last)
            continue;
        const auto value = parseNumber(word);
        if (!value)
            return std::nullopt;
        switch (field) {
        case 4:
            stat.parent = int(std::min<uint64_t>(*value, INT32_MAX));
            break;
        case 14:
            stat.userTime = *value;
            break;
        case 15:
            stat.systemTime = *value;
            break;
        default:
            stat.startTime = *value;
        }
    }
    return stat;
}

std::optional<std::string_view> statusValue(std::string_view status, std::string_view key)
{
    while (!status.empty()) {
        std::string_view line = takeLine(status);
        if (!line.starts_with(key) || !line.substr(key.size()).starts_with(':'))
            continue;
        line.remove_prefix(key.size() + 1);
        const size_t start = line.find_first_not_of(" \t");
        if (start == std::string_view::npos)
            return std::string_view();
        return line.substr(start, line.find_last_not_of(" \t") - start + 1);
    }
    return std::nullopt;
}

std::vector<std::string_view> splitArguments(std::string_view commandLine)
{
    std::vector<std::string_view> arguments;
    while (!commandLine.empty()) {
        const size_t end = std::min(commandLine.find('\0'), commandLine.size());
        arguments.push_back(commandLine.substr(0, end));
        commandLine.remove_prefix(std::min(end + 1, commandLine.size()));
    }
    return arguments;
}

uint64_t socketInode(std::string_view link)
{
    constexpr std::string_view prefix = "socket:[";
    if (!link.starts_with(prefix) || !link.ends_with(']'))
        return 0;
    return parseNumber(link.substr(prefix.size(), link.size() - prefix.size() - 1)).value_or(0);
}

bool operator==(const ListeningSocket &a, const ListeningSocket &b)
{
    return a.inode == b.inode && a.cgroup == b.cgroup && a.user == b.user && a.port == b.port &&
           a.isIpv6 == b.isIpv6 && memcmp(a.address, b.address, sizeof a.address) == 0;
}

std::vector<ListeningSocket> parseTcpTable(std::string_view table, bool isIpv6)
{
    std::vector<ListeningSocket> sockets;
    takeLine(table);
    while (!table.empty()) {
        std::string_view line = takeLine(table);
        std::string_view words[10];
        for (std::string_view &word : words)
            word = takeWord(line);
        const auto state = parseHex(words[3]);
        if (state && *state != listenState)
            break;
        ListeningSocket socket;
        socket.isIpv6 = isIpv6;
        const auto user = parseNumber(words[7]);
        const auto inode = parseNumber(words[9]);
        if (!state || !user || *user > UINT32_MAX || !inode || !parseTableAddress(words[1], socket))
            continue;
        socket.user = uint32_t(*user);
        socket.inode = *inode;
        sockets.push_back(socket);
    }
    return sockets;
}

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
        if (message.idiag_state == listenState)
            sockets.push_back(socket);
        offset += std::min<size_t>(NLMSG_ALIGN(header.nlmsg_len), size - offset);
    }
    return DiagEnd::more;
}

std::string addressText(const ListeningSocket &socket)
{
    const std::string port = ':' + std::to_string(socket.port);
    char text[INET6_ADDRSTRLEN] = "";
    if (isMappedIpv4(socket) || !socket.isIpv6) {
        inet_ntop(AF_INET, socket.address + (socket.isIpv6 ? 12 : 0), text, sizeof text);
        return (std::string_view(text) == "0.0.0.0" ? "*" : text) + port;
    }
    if (isUnspecified(socket))
        return '*' + port;
    inet_ntop(AF_INET6, socket.address, text, sizeof text);
    return '[' + std::string(text) + ']' + port;
}

std::string escapeWord(std::string_view text)
{
    constexpr std::string_view hex = "0123456789abcdef";
    std::string escaped;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte > 0x20 && byte < 0x7f && c != '\\') {
            escaped += c;
        } else {
            escaped += "\\x";
            escaped += hex[byte >> 4];
            escaped += hex[byte & 15];
        }
    }
    return escaped;
}

std::string_view baseName(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

std::string_view firstWord(std::string_view text)
{
    return text.substr(0, text.find(' '));
}

std::string foldName(std::string_view name)
{
    constexpr std::string_view wrapped = "-wrapped";
    if (name.size() > 4 && lowerCase(name.substr(name.size() - 4)) == ".exe")
        name.remove_suffix(4);
    if (name.size() > wrapped.size() + 1 && name.starts_with('.') && name.ends_with(wrapped))
        name = name.substr(1, name.size() - wrapped.size() - 1);
    if (name == "nodejs" || isVersionedNode(name))
        return "node";
    if (name == "bunx")
        return "bun";
    if (name == "mariadbd")
        return "mysqld";
    return std::string(name);
}

bool isKnownName(std::string_view name)
{
    constexpr std::array<std::string_view, 7> whole{"node",         "postgres", "mysqld", "mongod",
                                                    "redis-server", "deno",     "bun"};
    constexpr std::array<std::string_view, 7> parts{"python", "ruby",   "php", "docker",
                                                    "java",   "dotnet", "go"};
    const std::string lower = lowerCase(escapeWord(name));
    return std::find(whole.begin(), whole.end(), lower) != whole.end() ||
           std::any_of(parts.begin(), parts.end(), [&lower](std::string_view part) {
               return lower.find(part) != std::string::npos;
           });
}

bool stripDeleted(std::string_view &path)
{
    if (!path.ends_with(deletedMark))
        return false;
    path.remove_suffix(deletedMark.size());
    return true;
}

std::string programName(std::string_view executable, bool isReallyThere,
                        const std::vector<std::string_view> &arguments)
{
    constexpr std::string_view memoryFile = "/memfd:";
    if (!isReallyThere)
        stripDeleted(executable);
    std::string_view name = executable.starts_with(memoryFile)
                                ? executable.substr(memoryFile.size())
                                : baseName(executable);
    if (isDynamicLoader(name)) {
        const std::string_view operand = baseName(loaderOperand(arguments));
        if (!operand.empty())
            name = operand;
    }
    return foldName(name);
}

std::string hiddenProgramName(const std::vector<std::string_view> &arguments, std::string_view comm)
{
    if (!arguments.empty()) {
        std::string_view word = firstWord(arguments[0]);
        if (word.ends_with(':'))
            word.remove_suffix(1);
        const std::string_view name = baseName(word);
        if (!name.empty())
            return foldName(name);
    }
    return foldName(comm);
}

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

PortSet portsIn(std::string_view text)
{
    const auto isDotted = [text](size_t dot, size_t digit) {
        return dot < text.size() && digit < text.size() && text[dot] == '.' && isDigit(text[digit]);
    };
    PortSet ports;
    bool isInUrl = false;
    for (size_t at = 0; at < text.size(); ++at) {
        if (!isDigit(text[at])) {
            // A URL ends with its argument, or at a blank.
            if (static_cast<unsigned char>(text[at]) <= ' ')
                isInUrl = false;
            else if (text[at] == ':' && text.substr(at).starts_with("://"))
                isInUrl = true;
            continue;
        }
        const size_t start = at;
        while (at + 1 < text.size() && isDigit(text[at + 1]))
            ++at;
        // Before the text's start the places wrap to ones beyond its end.
        if (isInUrl || isDotted(start - 1, start - 2) || isDotted(at + 1, at + 2) ||
            (text[start] == '0' && at > start))
            continue;
        const auto number = parseNumber(text.substr(start, at + 1 - start));
        if (number && *number < ports.size())
            ports.set(size_t(*number));
    }
    return ports;
}

} // namespace tidewick::tools
