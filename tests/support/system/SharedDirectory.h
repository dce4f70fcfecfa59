#pragma once

#include <QTemporaryDir>

#include <string>

/// A directory that every user may enter, with copies of programs: another user can run nothing
/// that lies in a home of the mode 0700.
class SharedDirectory
{
public:
    SharedDirectory();
    ~SharedDirectory();
    SharedDirectory(const SharedDirectory &) = delete;
    SharedDirectory &operator=(const SharedDirectory &) = delete;

    std::string path() const { return m_directory.path().toStdString(); }
    std::string path(const std::string &name) const { return path() + '/' + name; }
    /// The path of a copy of `program` called `name`.
    std::string copy(const std::string &program, const std::string &name) const;
    /// The same under the program's own name.
    std::string copy(const std::string &program) const;

private:
    QTemporaryDir m_directory;
};
