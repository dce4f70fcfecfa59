#include "libexec/cells/ProcessCells.h"

#include "libexec/proc/Descriptor.h"
#include "libexec/proc/ProcFiles.h"
#include "libexec/proc/Words.h"

#include <algorithm>
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

/// A process's directory, and the file that tells most about it.
struct OpenProcess
{
    Descriptor directory;
    std::string text;
    std::optional<ProcessStat> stat; ///< of that text

    explicit OpenProcess(int pid)
        : directory(openDirectory(AT_FDCWD, ("/proc/" + std::to_string(pid)).c_str()))
    {
        if (directory.isOpen() && readFile(directory.value(), "stat", text))
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
    std::string uptime;
    readFile(AT_FDCWD, "/proc/uptime", uptime);
    return lifeTime(stat, uptime, ticksPerSecond());
}

} // namespace

std::string commandCell(int pid)
{
    const OpenProcess process(pid);
    if (!process.stat)
        return {};
    std::string text;
    if (readFile(process.directory.value(), "cmdline", text, commandLineLimit) && !text.empty())
        return escapeText(joinArguments(text)) + '\n';
    return escapeText('[' + std::string(process.stat->comm) + ']') +
           (process.stat->state == 'Z' ? " <defunct>\n" : "\n");
}

std::string memoryAndCpuCells(int pid)
{
    const OpenProcess process(pid);
    if (!process.stat)
        return {};
    std::string status;
    readFile(process.directory.value(), "status", status);
    return residentCell(status) + ' ' +
           percentage(*process.stat, lifeTime(*process.stat), ticksPerSecond()) + '\n';
}

std::string elapsedCell(int pid)
{
    const OpenProcess process(pid);
    return process.stat ? elapsedText(uint64_t(lifeTime(*process.stat))) + '\n' : std::string();
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

double lifeTime(const ProcessStat &stat, std::string_view uptime, double ticksPerSecond)
{
    // "12345.67 ...": hundredths of a second.
    const size_t point = std::min(uptime.find('.'), uptime.size());
    const uint64_t whole = parseNumber(uptime.substr(0, point)).value_or(0);
    const std::string_view rest = uptime.substr(std::min(point + 1, uptime.size()), 2);
    const double seconds = double(whole * 100 + parseNumber(rest).value_or(0)) / 100;
    return std::max(0.0, seconds - double(stat.startTime) / ticksPerSecond);
}

std::string residentCell(std::string_view status)
{
    // The counters in stat are rough ones; those here are summed up.
    const auto value = statusValue(status, "VmRSS");
    return paddedNumber(value ? parseNumber(firstWord(*value)).value_or(0) : 0, 5, ' ');
}

std::string percentage(const ProcessStat &stat, double seconds, double ticksPerSecond)
{
    const double ticks = double(stat.userTime) + double(stat.systemTime);
    const double tenths = seconds > 0 ? ticks * 1000 / ticksPerSecond / seconds : 0;
    const auto whole = static_cast<uint64_t>(std::min(tenths, 1e9));
    if (whole > 999)
        return paddedNumber(whole / 10, 4, ' ');
    return paddedNumber(whole / 10, 2, ' ') + '.' + char('0' + whole % 10);
}

std::string elapsedText(uint64_t seconds)
{
    const uint64_t days = seconds / 86400;
    const uint64_t hours = seconds / 3600 % 24;
    std::string text;
    if (days > 0)
        text = paddedNumber(days, 1, '0') + '-';
    if (days > 0 || hours > 0)
        text += paddedNumber(hours, 2, '0') + ':';
    text += paddedNumber(seconds / 60 % 60, 2, '0') + ':' + paddedNumber(seconds % 60, 2, '0');
    constexpr size_t width = 11;
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

std::string paddedNumber(uint64_t value, size_t width, char fill)
{
    char digits[20];
    size_t first = sizeof digits;
    do {
        digits[--first] = char('0' + value % 10);
        value /= 10;
    } while (value > 0);
    while (sizeof digits - first < width)
        digits[--first] = fill;
    return {digits + first, sizeof digits - first};
}

} // namespace tidewick::tools
