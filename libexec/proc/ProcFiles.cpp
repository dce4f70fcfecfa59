#include "libexec/proc/ProcFiles.h"

#include "libexec/proc/ChildAnswer.h"
#include "libexec/proc/Descriptor.h"

#include <cerrno>
#include <climits>

#include <fcntl.h>
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

std::string readCommandLine(int directory, std::string_view prefix)
{
    constexpr size_t limit = 1U << 17U;
    const std::string path = std::string(prefix) + "cmdline";
    return askChild(
               [&] {
                   std::string text;
                   readFile(directory, path.c_str(), text, limit);
                   return text;
               },
               directory)
        .value_or(std::string());
}

} // namespace tidewick::libexec
