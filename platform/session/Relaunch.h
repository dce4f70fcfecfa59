#pragma once

#include <QString>

namespace tidewick
{

/// Starts the program at `path`, without arguments, as soon as this process has ended and so has
/// given up its name on the bus. False where there is no such program or no process can be made;
/// whether it then starts nobody can tell. The caller ends this process.
bool relaunchAfterExit(const QString &path);

/// Whether the file at `path` is no longer the one that this process runs, as after an upgrade.
bool isReplaced(const QString &path);

} // namespace tidewick
