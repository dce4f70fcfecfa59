#pragma once

#include <string_view>

namespace tidewick::libexec
{

/// Whether file systems of this type, as the kernel calls it, answer without asking anybody else.
bool isLocalType(std::string_view type);

/// Whether the file that a process uses, by its link in /proc, is the one at `path`. Only file
/// systems of this machine are asked: a file server, or a program that plays one, might not answer.
/// A link on the way may lead to such a one all the same, so a child asks, see askChild().
bool isSameLocalFile(int directory, const char *link, const char *path);

} // namespace tidewick::libexec
