#include "libexec/proc/ProcessStat.h"

#include "libexec/proc/Words.h"

#include <algorithm>

namespace tidewick::libexec
{

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

} // namespace tidewick::libexec
