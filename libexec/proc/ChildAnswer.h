#pragma once

#include <functional>
#include <optional>
#include <string>

namespace tidewick::libexec
{

/// What `ask` returns in a child process. It may wait for something that never comes: a child can
/// be killed then, a thread cannot. Nothing where it takes more than half a second, or where all
/// the children of this program together have taken a whole one.
std::optional<std::string> askChild(const std::function<std::string()> &ask);

} // namespace tidewick::libexec
