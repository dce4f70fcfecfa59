#pragma once

#include <string>
#include <string_view>

namespace tidewick::libexec
{

/// The text with ASCII capitals made small.
std::string lowerCase(std::string_view text);

} // namespace tidewick::libexec
