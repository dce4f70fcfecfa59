#pragma once

#include <functional>
#include <optional>
#include <string>

namespace tidewick::libexec
{

/// What `ask` returns in a child process. It may wait for something that never comes: a child can
/// be killed then, a thread cannot. Nothing where it takes more than half a second, or where all
/// the children of this program together have taken a whole one.
///
/// The child has no descriptor but `needed`, or none where that is negative: it may outlive this
/// program, and would keep a reader of this program's output waiting for the end.
std::optional<std::string> askChild(const std::function<std::string()> &ask, int needed = -1);

} // namespace tidewick::libexec
