#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace tidewick::libexec
{

/// The names of those of the accounts that have one. Any of the system's databases may hold it, and
/// one that does not answer costs half a second and the name.
std::map<uint32_t, std::string> userNames(const std::set<uint32_t> &users);

} // namespace tidewick::libexec
