#include "libexec/ProcFiles.h"

#include <cerrno>
#include <climits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tidewick::tools
{

Descriptor::~Descriptor()
{
    if (m_value >= 0)
        close(m_value);
}

int openFolder(int folder, const char *path)
{
    return openat(folder, path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

bool readFile(int folder, const char *path, std::string &text, size_t limit)
{
    constexpr size_t piece = 4096;
    const Descriptor file(openat(folder, path, O_RDONLY | O_CLOEXEC));
    text.clear();
    if (!file.isOpen())
        return false;
    while (text.size() < limit) {
        const size_t size = text.size();
        const size_t room = size == 0 ? piece : size;
        text.resize(size + room);
        const ssize_t count = read(file.value(), text.data() + size, room);
        text.resize(size + size_t(count > 0 ? count : 0));
        if (count < 0)
            return false;
        if (count == 0)
            return true;
    }
    text.resize(limit);
    return true;
}

bool readLink(int folder, const char *path, std::string &text)
{
    text.resize(PATH_MAX);
    const ssize_t size = readlinkat(folder, path, text.data(), text.size());
    text.resize(size_t(size > 0 ? size : 0));
    return size >= 0;
}

bool wasRefused()
{
    return errno == EACCES || errno == EPERM;
}

bool isSameFile(int folderA, const char *pathA, int folderB, const char *pathB)
{
    constexpr unsigned mask = STATX_INO;
    struct statx a;
    struct statx b;
    return statx(folderA, pathA, AT_STATX_DONT_SYNC, mask, &a) == 0 &&
           statx(folderB, pathB, AT_STATX_DONT_SYNC, mask, &b) == 0 && a.stx_ino == b.stx_ino &&
           a.stx_dev_major == b.stx_dev_major && a.stx_dev_minor == b.stx_dev_minor;
}

bool writeOut(const std::string &text)
{
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = write(STDOUT_FILENO, text.data() + written, text.size() - written);
        if (count < 0 && errno != EINTR)
            return false;
        written += size_t(count > 0 ? count : 0);
    }
    return true;
}

} // namespace tidewick::tools
