#include "libexec/rows/SocketTable.h"

#include "libexec/names/EscapedText.h"
#include "libexec/rows/UserNames.h"

#include <algorithm>

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

std::set<uint32_t> holdingUsers(const SocketHolders &found)
{
    std::set<uint32_t> users;
    for (const Holder &holder : found.holders)
        users.insert(found.processes[holder.process].user);
    return users;
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
    const auto names = userNames(holdingUsers(found));
    size_t commandWidth = 7;
    size_t pidWidth = 3;
    size_t userWidth = 4;
    size_t deviceWidth = 6;
    for (const Holder &holder : found.holders) {
        const Process &process = found.processes[holder.process];
        const ListeningSocket &socket = sockets[holder.socket];
        const auto name = names.find(process.user);
        const bool isNumber = name == names.end();
        const std::string user = isNumber ? std::to_string(process.user) : escapeWord(name->second);
        // lsof gives numbers of users eight columns.
        userWidth = std::max<size_t>(userWidth, isNumber ? 8 : 4);
        // lsof's word for descriptors that it may not read.
        const std::string descriptor =
            isInferred(holder) ? " NOFD " : padLeft(std::to_string(holder.descriptor), 4) + "u ";
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
