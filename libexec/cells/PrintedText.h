#pragma once

#include "libexec/proc/TextBuffer.h"

#include <string_view>

namespace tidewick::libexec
{

/// Whether texts are UTF-8 in a locale of that name (setlocale(3)), by the codeset it names.
bool namesUtf8(std::string_view locale);
/// The same of the environment's locale. It is not looked up: one that is not installed counts too.
bool isUtf8Environment();

/// Makes one line of what /proc/PID/cmdline holds: the arguments with blanks between them and for
/// line breaks, without the NULs at the end.
void joinArguments(TextBuffer &commandLine);

/// Adds a text as ps prints it: '?' or '.' for what cannot be printed. In UTF-8 all characters can,
/// also those that Unicode does not know yet, but for control characters and line separators.
void addPrinted(TextBuffer &line, std::string_view text, bool isUtf8);

} // namespace tidewick::libexec
