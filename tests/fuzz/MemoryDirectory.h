#pragma once

#include <filesystem>
#include <string>

#include <unistd.h>

/// A directory in memory, for the files of one input.
class MemoryDirectory
{
public:
    MemoryDirectory() { std::filesystem::create_directories(m_path); }
    ~MemoryDirectory() { std::filesystem::remove_all(m_path); }
    MemoryDirectory(const MemoryDirectory &) = delete;
    MemoryDirectory &operator=(const MemoryDirectory &) = delete;

    const std::filesystem::path &path() const { return m_path; }

private:
    const std::filesystem::path m_path = "/dev/shm/tidewick-fuzz-" + std::to_string(getpid());
};
