#include "libexec/proc/LocalFiles.h"

#include "libexec/proc/ProcFiles.h"
#include "libexec/proc/Words.h"

#include <algorithm>
#include <array>

#include <fcntl.h>
#include <sys/stat.h>

namespace tidewick::libexec
{
namespace
{

// What the kernel remembers serves.
constexpr int withoutAsking = AT_STATX_DONT_SYNC;

/// The type of the file system mounted under that id; empty where it is not mounted for us.
std::string mountedType(uint64_t id)
{
    std::string text;
    readFile(AT_FDCWD, "/proc/self/mountinfo", text);
    const std::string start = std::to_string(id) + ' ';
    for (std::string_view rest = text; !rest.empty();) {
        std::string_view line = takeLine(rest);
        const size_t separator = line.find(" - ");
        if (!line.starts_with(start) || separator == std::string_view::npos)
            continue;
        line.remove_prefix(separator + 3);
        return std::string(takeWord(line));
    }
    return {};
}

bool isLocalType(std::string_view type)
{
    constexpr std::array<std::string_view, 11> types{"bcachefs", "btrfs", "ext2",    "ext3",
                                                     "ext4",     "f2fs",  "overlay", "squashfs",
                                                     "tmpfs",    "xfs",   "zfs"};
    return std::find(types.begin(), types.end(), type) != types.end();
}

} // namespace

bool isSameLocalFile(int directory, const char *link, const char *path)
{
    struct statx used;
    struct statx found;
    return statx(directory, link, withoutAsking, STATX_INO | STATX_MNT_ID, &used) == 0 &&
           isLocalType(mountedType(used.stx_mnt_id)) &&
           statx(AT_FDCWD, path, withoutAsking, STATX_INO, &found) == 0 &&
           used.stx_ino == found.stx_ino && used.stx_dev_major == found.stx_dev_major &&
           used.stx_dev_minor == found.stx_dev_minor;
}

} // namespace tidewick::libexec
