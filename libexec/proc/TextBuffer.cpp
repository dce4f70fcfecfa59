#include "libexec/proc/TextBuffer.h"

#include "libexec/proc/Descriptor.h"

#include <algorithm>

#include <fcntl.h>
#include <unistd.h>

namespace tidewick::libexec
{

void TextBuffer::add(char byte)
{
    if (m_size < m_memory.size())
        m_memory[m_size++] = byte;
}

void TextBuffer::add(std::string_view text)
{
    const size_t size = std::min(text.size(), m_memory.size() - m_size);
    std::copy_n(text.begin(), size, m_memory.begin() + ptrdiff_t(m_size));
    m_size += size;
}

bool TextBuffer::addFile(int directory, const char *path)
{
    const Descriptor file(openat(directory, path, O_RDONLY | O_CLOEXEC));
    if (!file.isOpen())
        return false;
    ssize_t count = 1;
    while (count > 0 && m_size < m_memory.size()) {
        count = ::read(file.value(), m_memory.data() + m_size, m_memory.size() - m_size);
        m_size += size_t(count > 0 ? count : 0);
    }
    return count >= 0;
}

void TextBuffer::replaceAll(char byte, char replacement)
{
    std::replace(m_memory.begin(), m_memory.begin() + ptrdiff_t(m_size), byte, replacement);
}

void TextBuffer::removeFromEnd(char byte)
{
    while (m_size > 0 && m_memory[m_size - 1] == byte)
        --m_size;
}

} // namespace tidewick::libexec
