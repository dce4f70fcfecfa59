#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tidewick::libexec
{

/// The pieces that the texts of /proc are made of.

bool isDigit(char c);

/// A decimal number and nothing else: no sign, no blank, no overflow.
std::optional<uint64_t> parseNumber(std::string_view digits);

/// Takes the next word, up to a space, off the front of `text`.
std::string_view takeWord(std::string_view &text);
/// Takes the next line, and its end, off the front of `text`.
std::string_view takeLine(std::string_view &text);

/// The part up to the first space.
std::string_view firstWord(std::string_view text);

} // namespace tidewick::libexec
