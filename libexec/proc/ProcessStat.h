#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tidewick::libexec
{

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

} // namespace tidewick::libexec
