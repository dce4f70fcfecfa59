#include "libexec/SocketTable.h"

#include "libexec/ProcFiles.h"

#include <algorithm>
#include <cwchar>
#include <cwctype>

#include <fcntl.h>
#include <pwd.h>

namespace tidewick::tools
{
namespace
{

struct Row
{
    std::string command;
    std::string pid;
    std::string user;
    std::string descriptor;
    std::string type;
    std::string device;
    std::string name;
};

/// The name of the account; empty where there is none.
std::string userName(uint32_t user)
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): this program has one thread
    const passwd *const entry = getpwuid(user);
    return entry == nullptr ? std::string() : escapeWord(entry->pw_name);
}

std::string padLeft(std::string_view text, size_t width)
{
    return std::string(width - std::min(width, text.size()), ' ') + std::string(text);
}

std::string padRight(std::string_view text, size_t width)
{
    return std::string(text) + std::string(width - std::min(width, text.size()), ' ');
}

} // namespace

std::string socketTable(const Scan &scan, const std::vector<ListeningSocket> &sockets)
{
    std::vector<Row> rows;
    std::map<uint32_t, std::string> users;
    size_t commandWidth = 7;
    size_t pidWidth = 3;
    size_t userWidth = 4;
    size_t deviceWidth = 6;
    for (const Holder &holder : scan.holders) {
        const Process &process = scan.processes[holder.process];
        const ListeningSocket &socket = sockets[holder.socket];
        std::string &user = users[process.user];
        if (user.empty())
            user = userName(process.user);
        if (user.empty()) {
            // lsof gives numbers of users eight columns.
            user = std::to_string(process.user);
            userWidth = std::max<size_t>(userWidth, 8);
        }
        // lsof's word for descriptors that it may not read.
        const std::string descriptor =
            holder.descriptor < 0 ? " NOFD " : padLeft(std::to_string(holder.descriptor), 4) + "u ";
        rows.push_back({escapeWord(process.command), std::to_string(process.pid), user, descriptor,
                        socket.isIpv6 ? "IPv6" : "IPv4", std::to_string(socket.inode),
                        addressText(socket)});
        commandWidth = std::max(commandWidth, rows.back().command.size());
        pidWidth = std::max(pidWidth, rows.back().pid.size());
        userWidth = std::max(userWidth, user.size());
        deviceWidth = std::max(deviceWidth, rows.back().device.size());
    }
    if (rows.empty())
        return {};
    std::string table = padRight("COMMAND", commandWidth) + ' ' + padLeft("PID", pidWidth) + ' ' +
                        padLeft("USER", userWidth) + "   FD   TYPE " +
                        padLeft("DEVICE", deviceWidth) + " SIZE/OFF NODE NAME\n";
    for (const Row &row : rows) {
        table += padRight(row.command, commandWidth) + ' ' + padLeft(row.pid, pidWidth) + ' ' +
                 padLeft(row.user, userWidth) + ' ' + row.descriptor + ' ' + row.type + ' ' +
                 padLeft(row.device, deviceWidth) + "      0t0  TCP " + row.name + " (LISTEN)\n";
    }
    return table;
}

std::string workingDirectoryFields(int pid)
{
    const std::string link = "/proc/" + std::to_string(pid) + "/cwd";
    std::string text;
    if (!readLink(AT_FDCWD, link.c_str(), text))
        return {};
    std::string_view path = text;
    if (stripDeleted(path) && isSameFile(AT_FDCWD, link.c_str(), AT_FDCWD, text.c_str()))
        path = text;
    return 'p' + std::to_string(pid) + "\nn" + escapePath(path) + '\n';
}

std::string escapePath(std::string_view path)
{
    constexpr std::string_view hex = "0123456789abcdef";
    std::string escaped;
    while (!path.empty()) {
        const auto byte = static_cast<unsigned char>(path[0]);
        if (byte >= 0x80) {
            mbstate_t state{};
            wchar_t character = 0;
            // NOLINTNEXTLINE(concurrency-mt-unsafe): the state is its own
            const size_t length = mbrtowc(&character, path.data(), path.size(), &state);
            if (length <= path.size() && iswprint(wint_t(character)) != 0) {
                escaped += path.substr(0, length);
                path.remove_prefix(length);
                continue;
            }
            escaped += "\\x";
            escaped += hex[byte >> 4];
            escaped += hex[byte & 15];
        } else if (byte == 0x7f) {
            escaped += "\\x7f";
        } else if (byte == '\\') {
            escaped += "\\\\";
        } else if (byte >= 0x20) {
            escaped += path[0];
        } else {
            // The order of the control characters is that of their letters from 8 to 13.
            constexpr std::string_view letters("btn\0fr", 6);
            const char letter = byte >= 8 && byte <= 13 && byte != 11 ? letters[byte - 8] : '\0';
            escaped += letter != '\0' ? '\\' : '^';
            escaped += letter != '\0' ? letter : char(byte + '@');
        }
        path.remove_prefix(1);
    }
    return escaped;
}

} // namespace tidewick::tools
