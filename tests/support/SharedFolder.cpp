#include "tests/support/SharedFolder.h"

#include <QFile>

#include <filesystem>

#include <sys/stat.h>

SharedFolder::SharedFolder() : m_folder(QStringLiteral("/tmp/tidewick-shared-XXXXXX"))
{
    chmod(QFile::encodeName(m_folder.path()).constData(), 01777);
}

SharedFolder::~SharedFolder()
{
    // Qt does not remove files with names that are no text.
    std::error_code ignored;
    std::filesystem::remove_all(path(), ignored);
}

std::string SharedFolder::copy(const std::string &program, const std::string &name) const
{
    std::string place = path(name);
    std::filesystem::copy_file(program, place, std::filesystem::copy_options::skip_existing);
    chmod(place.c_str(), 0755);
    return place;
}

std::string SharedFolder::copy(const std::string &program) const
{
    return copy(program, std::filesystem::path(program).filename());
}
