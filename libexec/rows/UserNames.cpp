#include "libexec/rows/UserNames.h"

#include "libexec/proc/ChildAnswer.h"

#include <cstdio>

#include <pwd.h>

namespace tidewick::libexec
{
namespace
{

/// Most accounts are in this file, which is on this machine.
std::map<uint32_t, std::string> localNames(const std::set<uint32_t> &users)
{
    std::map<uint32_t, std::string> names;
    FILE *const file = fopen("/etc/passwd", "re");
    if (file == nullptr)
        return names;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): this program has one thread
    while (const passwd *const entry = fgetpwent(file)) {
        const std::string name = entry->pw_name;
        // A line with a sign stands for entries of another database.
        if (users.contains(entry->pw_uid) && !name.starts_with('+') && !name.starts_with('-'))
            names.try_emplace(entry->pw_uid, name);
    }
    fclose(file);
    return names;
}

std::string nameInAnyDatabase(uint32_t user)
{
    // NOLINTNEXTLINE(concurrency-mt-unsafe): this program has one thread
    const passwd *const entry = getpwuid(user);
    return entry == nullptr ? "" : entry->pw_name;
}

} // namespace

std::map<uint32_t, std::string> userNames(const std::set<uint32_t> &users)
{
    auto names = localNames(users);
    for (const uint32_t user : users) {
        if (names.contains(user))
            continue;
        const auto name = askChild([user] { return nameInAnyDatabase(user); });
        if (name && !name->empty())
            names.emplace(user, *name);
    }
    return names;
}

} // namespace tidewick::libexec
