#include "libexec/rows/WorkingDirectory.h"

#include "libexec/names/EscapedText.h"
#include "libexec/names/ProgramName.h"
#include "libexec/proc/LocalFiles.h"
#include "libexec/proc/ProcFiles.h"

#include <fcntl.h>

namespace tidewick::libexec
{

std::string workingDirectoryFields(int pid)
{
    const std::string link = "/proc/" + std::to_string(pid) + "/cwd";
    std::string text;
    if (!readLink(AT_FDCWD, link.c_str(), text))
        return {};
    std::string_view path = text;
    if (stripDeleted(path) && isSameLocalFile(AT_FDCWD, link.c_str(), text.c_str()))
        path = text;
    return 'p' + std::to_string(pid) + "\nn" + escapePath(path) + '\n';
}

} // namespace tidewick::libexec
