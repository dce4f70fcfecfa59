#include "libexec/proc/Descriptor.h"

#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <unistd.h>

namespace tidewick::libexec
{

Descriptor::~Descriptor()
{
    if (m_value >= 0)
        close(m_value);
}

int openDirectory(int directory, const char *path)
{
    return openat(directory, path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
}

bool writeAll(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = write(descriptor, text.data(), text.size());
        if (count < 0 && errno != EINTR)
            return false;
        text.remove_prefix(size_t(count > 0 ? count : 0));
    }
    return true;
}

} // namespace tidewick::libexec
