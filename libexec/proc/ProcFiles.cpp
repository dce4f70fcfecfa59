#include "libexec/proc/ProcFiles.h"

#include "libexec/proc/Descriptor.h"

#include <cerrno>
#include <climits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tidewick::libexec
{

bool readFile(int directory, const char *path, std::string &text, size_t limit)
{
    constexpr size_t piece = 4096;
    const Descriptor file(openat(directory, path, O_RDONLY | O_CLOEXEC));
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

bool readLink(int directory, const char *path, std::string &text)
{
    text.resize(PATH_MAX);
    const ssize_t size = readlinkat(directory, path, text.data(), text.size());
    text.resize(size_t(size > 0 ? size : 0));
    return size >= 0;
}

bool wasRefused()
{
    return errno == EACCES || errno == EPERM;
}

bool isSameFile(int directoryA, const char *pathA, int directoryB, const char *pathB)
{
    constexpr unsigned mask = STATX_INO;
    struct statx a;
    struct statx b;
    return statx(directoryA, pathA, AT_STATX_DONT_SYNC, mask, &a) == 0 &&
           statx(directoryB, pathB, AT_STATX_DONT_SYNC, mask, &b) == 0 && a.stx_ino == b.stx_ino &&
           a.stx_dev_major == b.stx_dev_major && a.stx_dev_minor == b.stx_dev_minor;
}

} // namespace tidewick::libexec
