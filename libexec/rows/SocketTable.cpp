#include "libexec/rows/SocketTable.h"

#include "libexec/names/EscapedText.h"

#include <algorithm>
#include <map>

#include <pwd.h>

namespace tidewick::libexec
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

std::string socketTable(const SocketHolders &found, const std::vector<ListeningSocket> &sockets)
{
    std::vector<Row> rows;
    std::map<uint32_t, std::string> users;
    size_t commandWidth = 7;
    size_t pidWidth = 3;
    size_t userWidth = 4;
    size_t deviceWidth = 6;
    for (const Holder &holder : found.holders) {
        const Process &process = found.processes[holder.process];
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

} // namespace tidewick::libexec
