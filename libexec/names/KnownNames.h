#pragma once

#include <string_view>

namespace tidewick::libexec
{

/// Whether the application keeps a listener of that name, which it reads as escapeWord() wrote it.
bool isKnownName(std::string_view name);

} // namespace tidewick::libexec
