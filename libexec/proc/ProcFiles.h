#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tidewick::libexec
{

/// The whole of a file below `directory`, up to `limit` bytes, into `text`, whose memory is used
/// again. False, and errno, where it cannot be read.
bool readFile(int directory, const char *path, std::string &text, size_t limit = 1U << 20U);

/// A link's text. False, and errno, where it cannot be read.
bool readLink(int directory, const char *path, std::string &text);

/// Whether the last call was refused, and did not just meet a process that is gone.
bool wasRefused();

/// The arguments in the file cmdline. They are read from the process's memory, which another
/// process may keep locked: a child reads them, for half a second at most. Empty where that fails.
std::string readCommandLine(int directory, std::string_view prefix);

} // namespace tidewick::libexec
