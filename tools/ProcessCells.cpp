#include "tools/ProcessCells.h"

#include "tools/ProcFiles.h"
#include "tools/ProcText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <cwctype>

#include <fcntl.h>
#include <langinfo.h>
#include <unistd.h>

namespace tidewick::tools
{
namespace
{

/// What ps reads of a command line.
constexpr size_t commandLineLimit = (1U << 17U) - 1;

bool isPlain(unsigned char byte)
{
    return byte >= 0x20 && byte < 0x7f;
}

/// How long the UTF-8 sequence that begins with this byte is; 0: none does.
size_t sequenceLength(unsigned char lead)
{
    if (lead < 0x80)
        return 1;
    if (lead >= 0xc2 && lead <= 0xdf)
        return 2;
    if (lead >= 0xe0 && lead <= 0xef)
        return 3;
    return lead >= 0xf0 && lead <= 0xf4 ? 4 : 0;
}

/// Appends what the locale can print of `text`, and '?' for each thing that it cannot.
void appendPrintable(std::string &escaped, std::string_view text)
{
    while (!text.empty()) {
        mbstate_t state{};
        wchar_t character = 0;
        // NOLINTNEXTLINE(concurrency-mt-unsafe): the state is its own
        const size_t length = mbrtowc(&character, text.data(), text.size(), &state);
        if (length == 0 || length > text.size()) {
            escaped += '?';
            text.remove_prefix(1);
            continue;
        }
        if (iswprint(wint_t(character)) != 0)
            escaped += text.substr(0, length);
        else
            escaped += '?';
        text.remove_prefix(length);
    }
}

/// A process's folder, and the file that tells most about it.
struct OpenProcess
{
    Descriptor folder;
    std::optional<ProcessStat> stat;

    explicit OpenProcess(int pid)
        : folder(openFolder(AT_FDCWD, ("/proc/" + std::to_string(pid)).c_str()))
    {
        std::string text;
        if (folder.isOpen() && readFile(folder.value(), "stat", text))
            stat = parseStat(text);
    }
};

double ticksPerSecond()
{
    return double(sysconf(_SC_CLK_TCK));
}

/// Seconds since the process was started.
double lifeTime(const ProcessStat &stat)
{
    std::string text;
    double uptime = 0;
    if (readFile(AT_FDCWD, "/proc/uptime", text))
        uptime = strtod(text.c_str(), nullptr);
    return std::max(0.0, uptime - double(stat.startTime) / ticksPerSecond());
}

} // namespace

std::string commandCell(int pid)
{
    const OpenProcess process(pid);
    if (!process.stat)
        return {};
    std::string text;
    if (readFile(process.folder.value(), "cmdline", text, commandLineLimit) && !text.empty())
        return escapeText(joinArguments(text)) + '\n';
    return escapeText('[' + process.stat->comm + ']') +
           (process.stat->state == 'Z' ? " <defunct>\n" : "\n");
}

std::string memoryAndCpuCells(int pid)
{
    const OpenProcess process(pid);
    if (!process.stat)
        return {};
    std::string text;
    uint64_t resident = 0;
    // The counters in stat are rough ones; those here are summed up.
    if (readFile(process.folder.value(), "status", text)) {
        const auto value = statusValue(text, "VmRSS");
        resident = value ? parseNumber(firstWord(*value)).value_or(0) : 0;
    }
    const double ticks = double(process.stat->userTime) + double(process.stat->systemTime);
    char cell[32];
    snprintf(cell, sizeof cell, "%5llu ", static_cast<unsigned long long>(resident));
    return cell + percentage(ticks, lifeTime(*process.stat), ticksPerSecond()) + '\n';
}

std::string elapsedCell(int pid)
{
    const OpenProcess process(pid);
    return process.stat ? elapsedText(long(lifeTime(*process.stat))) + '\n' : std::string();
}

std::string joinArguments(std::string_view commandLine)
{
    const size_t last = commandLine.find_last_not_of('\0');
    if (last == std::string_view::npos)
        return "?";
    std::string text(commandLine.substr(0, last + 1));
    std::replace(text.begin(), text.end(), '\0', ' ');
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

std::string escapeText(std::string_view text)
{
    std::string escaped;
    // ps takes a sequence by the length that its first byte tells. At a byte that begins none it
    // gives the characters up and goes on by bytes, to the end of the text.
    // NOLINTNEXTLINE(concurrency-mt-unsafe): this program has one thread
    bool byCharacter = strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
    while (!text.empty()) {
        const auto byte = static_cast<unsigned char>(text[0]);
        const size_t length = sequenceLength(byte);
        byCharacter = byCharacter && length > 0 && length <= text.size();
        if (byCharacter) {
            appendPrintable(escaped, text.substr(0, length));
            text.remove_prefix(length);
            continue;
        }
        if (isPlain(byte))
            escaped += text[0];
        else
            escaped += byte < 0x80 ? '.' : '?';
        text.remove_prefix(1);
    }
    return escaped;
}

std::string percentage(double ticks, double seconds, double ticksPerSecond)
{
    const double tenths = seconds > 0 ? ticks * 1000 / ticksPerSecond / seconds : 0;
    const auto whole = static_cast<unsigned long>(std::min(tenths, 1e9));
    char cell[32];
    if (whole > 999)
        snprintf(cell, sizeof cell, "%4lu", whole / 10);
    else
        snprintf(cell, sizeof cell, "%2lu.%lu", whole / 10, whole % 10);
    return cell;
}

std::string elapsedText(long seconds)
{
    const long days = seconds / 86400;
    const long hours = seconds / 3600 % 24;
    const long minutes = seconds / 60 % 60;
    char text[64];
    if (days > 0)
        snprintf(text, sizeof text, "%ld-%02ld:%02ld:%02ld", days, hours, minutes, seconds % 60);
    else if (hours > 0)
        snprintf(text, sizeof text, "%02ld:%02ld:%02ld", hours, minutes, seconds % 60);
    else
        snprintf(text, sizeof text, "%02ld:%02ld", minutes, seconds % 60);
    char cell[80];
    snprintf(cell, sizeof cell, "%11s", text);
    return cell;
}

} // namespace tidewick::tools
