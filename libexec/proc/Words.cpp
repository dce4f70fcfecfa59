#include "libexec/proc/Words.h"

#include <algorithm>

namespace tidewick::libexec
{

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

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

std::string_view firstWord(std::string_view text)
{
    return text.substr(0, text.find(' '));
}

} // namespace tidewick::libexec
