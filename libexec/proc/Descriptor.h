#pragma once

#include <string_view>

namespace tidewick::libexec
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

/// A descriptor of the directory, to be owned by a Descriptor; negative where it cannot be opened.
int openDirectory(int directory, const char *path);

/// Writes all of it; false where that fails.
bool writeAll(int descriptor, std::string_view text);

} // namespace tidewick::libexec
