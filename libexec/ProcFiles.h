#pragma once

#include <string>

#include <sys/types.h>

namespace tidewick::tools
{

/// An open file descriptor, closed at the end of its scope.
class Descriptor
{
public:
    explicit Descriptor(int value = -1) : m_value(value) {}
    ~Descriptor();
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int value() const { return m_value; }
    bool isOpen() const { return m_value >= 0; }

private:
    int m_value;
};

int openFolder(int folder, const char *path);

/// The whole of a file below `folder`, up to `limit` bytes, into `text`, whose memory is used
/// again. False, and errno, where it cannot be read.
bool readFile(int folder, const char *path, std::string &text, size_t limit = 1U << 20U);

/// A link's text. False, and errno, where it cannot be read.
bool readLink(int folder, const char *path, std::string &text);

/// Whether the last call was refused, and did not just meet a process that is gone.
bool wasRefused();

/// Whether two files, links followed, are one and the same. What the file system remembers serves:
/// nobody asks a file server that may not answer.
bool isSameFile(int folderA, const char *pathA, int folderB, const char *pathB);

/// Writes all of it to standard output; false where that fails.
bool writeOut(const std::string &text);

} // namespace tidewick::tools
