#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tidewick::libexec
{

/// The part after the last slash.
std::string_view baseName(std::string_view path);

/// Takes ` (deleted)`, which the kernel appends to a removed file's path, off. False: was not
/// there.
bool stripDeleted(std::string_view &path);

/// One name for the spellings of one program: "nodejs" is node, ".ruby-wrapped" is ruby.
std::string foldName(std::string_view name);
/// What the link /proc/PID/exe names, ` (deleted)` taken off unless it `isReallyThere`; for the
/// dynamic loader the program that it was asked to run.
std::string programName(std::string_view executable, bool isReallyThere,
                        const std::vector<std::string_view> &arguments);
/// Whether it is the dynamic loader, started by hand.
bool isDynamicLoader(std::string_view name);
/// The name of a process whose executable may not be read, by what the kernel calls its main
/// thread.
std::string hiddenProgramName(std::string_view comm);

} // namespace tidewick::libexec
