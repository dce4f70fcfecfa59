#pragma once

#include <cstddef>
#include <string>

namespace tidewick::libexec
{

/// The whole of a file below `directory`, up to `limit` bytes, into `text`, whose memory is used
/// again. False, and errno, where it cannot be read.
bool readFile(int directory, const char *path, std::string &text, size_t limit = 1U << 20U);

/// A link's text. False, and errno, where it cannot be read.
bool readLink(int directory, const char *path, std::string &text);

/// Whether the last call was refused, and did not just meet a process that is gone.
bool wasRefused();

/// Whether two files, links followed, are one and the same. What the file system remembers serves:
/// nobody asks a file server that may not answer.
bool isSameFile(int directoryA, const char *pathA, int directoryB, const char *pathB);

} // namespace tidewick::libexec
