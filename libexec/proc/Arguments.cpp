#include "libexec/proc/Arguments.h"

#include <algorithm>

namespace tidewick::libexec
{

std::vector<std::string_view> splitArguments(std::string_view commandLine)
{
    std::vector<std::string_view> arguments;
    while (!commandLine.empty()) {
        const size_t end = std::min(commandLine.find('\0'), commandLine.size());
        arguments.push_back(commandLine.substr(0, end));
        commandLine.remove_prefix(std::min(end + 1, commandLine.size()));
    }
    return arguments;
}

std::string_view optionValue(const std::vector<std::string_view> &arguments, std::string_view name)
{
    for (size_t i = 1; i < arguments.size(); ++i) {
        std::string_view argument = arguments[i];
        if (!argument.starts_with('-'))
            continue;
        argument.remove_prefix(argument.starts_with("--") ? 2 : 1);
        if (!argument.starts_with(name))
            continue;
        argument.remove_prefix(name.size());
        if (argument.starts_with('='))
            return argument.substr(1);
        if (argument.empty() && i + 1 < arguments.size())
            return arguments[i + 1];
    }
    return {};
}

} // namespace tidewick::libexec
