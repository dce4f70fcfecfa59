#pragma once

#include <span>
#include <string_view>

namespace tidewick::libexec
{

/// Text in memory that the caller owns. ps takes none at run time: it knows how long its texts may
/// get. What does not fit is left out.
class TextBuffer
{
public:
    explicit TextBuffer(std::span<char> memory) : m_memory(memory) {}

    std::string_view view() const { return {m_memory.data(), m_size}; }

    void add(char byte);
    void add(std::string_view text);
    /// Adds a file below `directory`. False, and errno, where it cannot be read.
    bool addFile(int directory, const char *path);

    void replaceAll(char byte, char replacement);
    void removeFromEnd(char byte);

private:
    std::span<char> m_memory;
    size_t m_size = 0;
};

} // namespace tidewick::libexec
