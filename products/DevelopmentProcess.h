#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace tidewick
{

/// A development runtime or service, by the name of its process in lower case.
struct DevelopmentProcess
{
    enum Match { whole, part };

    Match match;
    std::string_view name;

    constexpr bool matches(std::string_view lowerCaseName) const
    {
        return match == whole ? lowerCaseName == name
                              : lowerCaseName.find(name) != std::string_view::npos;
    }
};

/// A name that contains "go" counts on purpose; "node" must match as a whole.
inline constexpr auto developmentProcesses = std::to_array<DevelopmentProcess>({
    {DevelopmentProcess::whole, "node"},
    {DevelopmentProcess::part, "python"},
    {DevelopmentProcess::part, "ruby"},
    {DevelopmentProcess::part, "php"},
    {DevelopmentProcess::whole, "postgres"},
    {DevelopmentProcess::whole, "mysqld"},
    {DevelopmentProcess::whole, "mongod"},
    {DevelopmentProcess::whole, "redis-server"},
    {DevelopmentProcess::part, "docker"},
    {DevelopmentProcess::whole, "deno"},
    {DevelopmentProcess::whole, "bun"},
    {DevelopmentProcess::part, "java"},
    {DevelopmentProcess::part, "dotnet"},
    {DevelopmentProcess::part, "go"},
});

/// Whether a process of that name, in lower case, is kept by the application.
constexpr bool isDevelopmentProcessName(std::string_view lowerCaseName)
{
    return std::any_of(
        developmentProcesses.begin(), developmentProcesses.end(),
        [lowerCaseName](const DevelopmentProcess &one) { return one.matches(lowerCaseName); });
}

} // namespace tidewick
