#include "libexec/proc/LocalFiles.h"

#include "libexec/proc/ChildAnswer.h"
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

struct Mount
{
    uint64_t id = 0;
    std::string type;
};

/// A mount point as the kernel writes it: blanks and backslashes are three octal digits.
std::string unescaped(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const bool isEscape = text[0] == '\\' && text.size() >= 4;
        const auto digit = [text](size_t at) {
            return unsigned(text[at] - '0') & 7U;
        };
        result += isEscape ? char(digit(1) << 6U | digit(2) << 3U | digit(3)) : text[0];
        text.remove_prefix(isEscape ? 4 : 1);
    }
    return result;
}

bool isBelow(std::string_view path, std::string_view directory)
{
    return directory == "/" ||
           (path.starts_with(directory) && path.substr(directory.size()).starts_with('/'));
}

/// The mount that a path without links leads to, by the kernel's list. No file system is asked.
Mount mountOf(std::string_view path)
{
    std::string text;
    readFile(AT_FDCWD, "/proc/self/mountinfo", text);
    Mount last;
    size_t longest = 0;
    for (std::string_view rest = text; !rest.empty();) {
        std::string_view line = takeLine(rest);
        const auto id = parseNumber(takeWord(line));
        for (int skipped = 0; skipped < 3; ++skipped)
            takeWord(line);
        const std::string place = unescaped(takeWord(line));
        const size_t separator = line.find(" - ");
        if (!id || separator == std::string_view::npos || place.size() < longest ||
            !isBelow(path, place))
            continue;
        line.remove_prefix(separator + 3);
        longest = place.size();
        last = {*id, std::string(takeWord(line))};
    }
    return last;
}

/// Whether the file is on that mount, and is the one at `path`.
bool isSameFile(int directory, const char *link, const char *path, uint64_t mount)
{
    struct statx used;
    struct statx found;
    return statx(directory, link, withoutAsking, STATX_INO | STATX_MNT_ID, &used) == 0 &&
           used.stx_mnt_id == mount &&
           statx(AT_FDCWD, path, withoutAsking, STATX_INO, &found) == 0 &&
           used.stx_ino == found.stx_ino && used.stx_dev_major == found.stx_dev_major &&
           used.stx_dev_minor == found.stx_dev_minor;
}

} // namespace

bool isLocalType(std::string_view type)
{
    constexpr std::array<std::string_view, 11> types{"bcachefs", "btrfs", "ext2",    "ext3",
                                                     "ext4",     "f2fs",  "overlay", "squashfs",
                                                     "tmpfs",    "xfs",   "zfs"};
    return std::find(types.begin(), types.end(), type) != types.end();
}

bool isSameLocalFile(int directory, const char *link, const char *path)
{
    const Mount mount = mountOf(path);
    if (!isLocalType(mount.type))
        return false;
    constexpr std::string_view yes = "yes";
    return askChild(
               [&] { return std::string(isSameFile(directory, link, path, mount.id) ? yes : ""); },
               directory) == yes;
}

} // namespace tidewick::libexec
