#pragma once

#include <string>
#include <string_view>

namespace tidewick::libexec
{

/// Every byte that could end a word or a line, or that is not ASCII, as \xNN.
std::string escapeWord(std::string_view text);

/// A path as lsof prints it in a UTF-8 locale: what is not printable there is escaped (lsof(8)).
std::string escapePath(std::string_view path);

} // namespace tidewick::libexec
