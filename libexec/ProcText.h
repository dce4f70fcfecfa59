#pragma once

#include <bitset>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The texts of /proc and of the tools' output, as pure functions: they take what was read and ask
/// nobody. All of it may come from hostile processes.
namespace tidewick::tools
{

/// A decimal number and nothing else: no sign, no blank, no overflow.
std::optional<uint64_t> parseNumber(std::string_view digits);

/// What /proc/PID/stat tells (proc(5)); times in clock ticks. The name is a part of the text read.
struct ProcessStat
{
    std::string_view comm;
    char state = '?';
    int parent = 0;
    uint64_t userTime = 0;
    uint64_t systemTime = 0;
    uint64_t startTime = 0;
};
/// The name may hold anything, so the fields begin after the last parenthesis.
std::optional<ProcessStat> parseStat(std::string_view text);

/// The value of `key` in /proc/PID/status, without blanks around it.
std::optional<std::string_view> statusValue(std::string_view status, std::string_view key);

/// The arguments in /proc/PID/cmdline, each ended by a NUL.
std::vector<std::string_view> splitArguments(std::string_view commandLine);

/// The inode in a link like "socket:[1234]"; 0 for any other link.
uint64_t socketInode(std::string_view link);

/// A listening TCP socket. An IPv4 address has its bytes first in `address`.
struct ListeningSocket
{
    uint64_t inode = 0;
    uint64_t cgroup = 0; ///< 0: not told
    uint32_t user = 0;
    uint16_t port = 0;
    bool isIpv6 = false;
    uint8_t address[16] = {};
};
bool operator==(const ListeningSocket &a, const ListeningSocket &b);

/// Reads /proc/net/tcp or tcp6 up to its first socket that does not listen: the listening ones come
/// first. A line that does not fit is skipped.
std::vector<ListeningSocket> parseTcpTable(std::string_view table, bool isIpv6);

/// How a buffer of netlink messages ended.
enum class DiagEnd { more, done, interrupted, error };
/// Reads answers of sock_diag(7) to a dump of listening TCP sockets (netlink(7)).
DiagEnd parseDiagMessages(const char *buffer, size_t size, std::vector<ListeningSocket> &sockets);

/// lsof's NAME: "*:80", "127.0.0.1:80", "[::1]:80".
std::string addressText(const ListeningSocket &socket);

/// Every byte that could end a word or a line, or that is not ASCII, as \xNN.
std::string escapeWord(std::string_view text);

/// The part after the last slash.
std::string_view baseName(std::string_view path);
/// The part up to the first space.
std::string_view firstWord(std::string_view text);

/// One name for the spellings of one program: "nodejs" is node, ".ruby-wrapped" is ruby.
std::string foldName(std::string_view name);
/// Whether the application keeps a listener of that name, which it reads as escapeWord wrote it.
bool isKnownName(std::string_view name);
/// What the link /proc/PID/exe names, ` (deleted)` taken off unless it `isReallyThere`; for the
/// dynamic loader the program that it was asked to run.
std::string programName(std::string_view executable, bool isReallyThere,
                        const std::vector<std::string_view> &arguments);
/// The name of a process whose executable may not be read.
std::string hiddenProgramName(const std::vector<std::string_view> &arguments,
                              std::string_view comm);
/// Takes ` (deleted)`, which the kernel appends to a removed file's path, off. False: was not
/// there.
bool stripDeleted(std::string_view &path);

/// The TCP address and port that a docker-proxy was told to listen on.
std::optional<ListeningSocket> forwardedSocket(const std::vector<std::string_view> &arguments);
/// How well that fits a socket.
enum class ProxyMatch { none, wildcard, exact };
ProxyMatch matchForwarder(const ListeningSocket &asked, const ListeningSocket &socket);

/// A set of ports.
using PortSet = std::bitset<1U << 16U>;
/// The numbers of their own in the text that may be ports listened on: not inside a longer number
/// or an address, nor in a URL, which tells where others listen.
PortSet portsIn(std::string_view text);

} // namespace tidewick::tools
