#include "libexec/rows/DirectoryQuery.h"

#include "libexec/proc/Words.h"

#include <algorithm>
#include <array>
#include <climits>

namespace tidewick::libexec
{

std::optional<int> directoryQuery(int argc, char *argv[])
{
    constexpr std::array<std::string_view, 5> rest{"-a", "-d", "cwd", "-F", "n"};
    if (argc != 3 + int(rest.size()) || std::string_view(argv[1]) != "-p" ||
        !std::equal(rest.begin(), rest.end(), argv + 3))
        return std::nullopt;
    const auto pid = parseNumber(argv[2]);
    return pid && *pid > 0 && *pid <= INT_MAX ? std::optional(int(*pid)) : std::nullopt;
}

} // namespace tidewick::libexec
