#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

/// Writes a file, and makes the directories above it.
inline void write(const std::filesystem::path &path, std::string_view text)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << text;
}

/// Writes the file stat of a process in a directory like /proc (proc(5)).
inline void writeStat(const std::filesystem::path &proc, int pid, int parent,
                      const std::string &comm = "server", int startTime = 5000)
{
    write(proc / std::to_string(pid) / "stat",
          std::to_string(pid) + " (" + comm + ") S " + std::to_string(parent) +
              " 1 1 0 -1 4194304 1 0 0 0 0 0 0 0 20 0 1 0 " + std::to_string(startTime) + " 1 1\n");
}
