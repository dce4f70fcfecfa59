#include "libexec/names/KnownNames.h"

#include "libexec/names/EscapedText.h"
#include "libexec/names/LowerCase.h"

#include <algorithm>
#include <array>

namespace tidewick::tools
{

bool isKnownName(std::string_view name)
{
    constexpr std::array<std::string_view, 7> whole{"node",         "postgres", "mysqld", "mongod",
                                                    "redis-server", "deno",     "bun"};
    constexpr std::array<std::string_view, 7> parts{"python", "ruby",   "php", "docker",
                                                    "java",   "dotnet", "go"};
    const std::string lower = lowerCase(escapeWord(name));
    return std::find(whole.begin(), whole.end(), lower) != whole.end() ||
           std::any_of(parts.begin(), parts.end(), [&lower](std::string_view part) {
               return lower.find(part) != std::string::npos;
           });
}

} // namespace tidewick::tools
