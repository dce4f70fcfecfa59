#pragma once

#include <QString>

namespace tidewick
{

/// Starts the program at `path`, without arguments, once this process has ended and its name on the
/// bus is free. False if there is no such program or no process can be made; a later failure goes
/// unnoticed. The caller ends this process.
bool relaunchAfterExit(const QString &path);

/// Whether this process runs another file than the one now at `path`, as after an upgrade.
bool isReplaced(const QString &path);

} // namespace tidewick
