#include "libexec/cells/NumberCells.h"

#include "libexec/proc/Words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace tidewick::libexec
{
namespace
{

void addPadded(TextBuffer &line, std::string_view text, size_t width, char fill)
{
    for (size_t column = text.size(); column < width; ++column)
        line.add(fill);
    line.add(text);
}

} // namespace

double lifeTime(const ProcessStat &stat, std::string_view uptime, double ticksPerSecond)
{
    // "12345.67 ...": hundredths of a second.
    const size_t point = std::min(uptime.find('.'), uptime.size());
    const uint64_t whole = parseNumber(uptime.substr(0, point)).value_or(0);
    const std::string_view rest = uptime.substr(std::min(point + 1, uptime.size()), 2);
    const double seconds = double(whole * 100 + parseNumber(rest).value_or(0)) / 100;
    const auto now = static_cast<uint64_t>(std::min(seconds * ticksPerSecond, 1e18));
    return now > stat.startTime ? double(now - stat.startTime) / ticksPerSecond : 0;
}

void addResident(TextBuffer &line, std::string_view status)
{
    // The counters in stat are rough ones; those here are summed up.
    const auto value = statusValue(status, "VmRSS");
    addNumber(line, value ? parseNumber(firstWord(*value)).value_or(0) : 0, 5);
}

void addPercentage(TextBuffer &line, const ProcessStat &stat, double seconds, double ticksPerSecond)
{
    const double ticks = double(stat.userTime) + double(stat.systemTime);
    // ps turns the seconds into whole ticks again: 1.14 s, times 100 113.99..., are 113 ticks.
    const double life = std::trunc(seconds * ticksPerSecond);
    const double tenths = life > 0 ? ticks * 1000 / life : 0;
    const auto whole = static_cast<uint64_t>(std::min(tenths, 1e9));
    if (whole > 999) {
        addNumber(line, whole / 10, 4);
        return;
    }
    addNumber(line, whole / 10, 2);
    line.add('.');
    addNumber(line, whole % 10);
}

void addElapsed(TextBuffer &line, uint64_t seconds)
{
    std::array<char, 40> memory;
    TextBuffer text(memory);
    const uint64_t days = seconds / 86400;
    const uint64_t hours = seconds / 3600 % 24;
    if (days > 0) {
        addNumber(text, days);
        text.add('-');
    }
    if (days > 0 || hours > 0) {
        addNumber(text, hours, 2, '0');
        text.add(':');
    }
    addNumber(text, seconds / 60 % 60, 2, '0');
    text.add(':');
    addNumber(text, seconds % 60, 2, '0');
    addPadded(line, text.view(), 11, ' ');
}

void addNumber(TextBuffer &line, uint64_t value, size_t width, char fill)
{
    std::array<char, 20> digits;
    const auto end = std::to_chars(digits.begin(), digits.end(), value).ptr;
    addPadded(line, {digits.data(), size_t(end - digits.data())}, width, fill);
}

} // namespace tidewick::libexec
