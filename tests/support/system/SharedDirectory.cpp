#include "tests/support/system/SharedDirectory.h"

#include <QFile>

#include <filesystem>

#include <sys/stat.h>

SharedDirectory::SharedDirectory() : m_directory(QStringLiteral("/tmp/tidewick-shared-XXXXXX"))
{
    chmod(QFile::encodeName(m_directory.path()).constData(), 01777);
}

SharedDirectory::~SharedDirectory()
{
    // Qt does not remove files with names that are no text.
    std::error_code ignored;
    std::filesystem::remove_all(path(), ignored);
}

std::string SharedDirectory::copy(const std::string &program, const std::string &name) const
{
    std::string place = path(name);
    std::filesystem::copy_file(program, place, std::filesystem::copy_options::skip_existing);
    chmod(place.c_str(), 0755);
    return place;
}

std::string SharedDirectory::copy(const std::string &program) const
{
    return copy(program, std::filesystem::path(program).filename());
}
