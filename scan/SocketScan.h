#pragma once

#include "model/PortInfo.h"
#include "scan/SystemInterfaces.h"

#include <QList>
#include <QString>

#include <stop_token>

namespace tidewick
{

/// One whole scan: the development listeners of this machine, enriched, ascending by port.
/// Blocks; call it in a pool thread. A stop request ends it early with a list that is worthless.
/// Throws ToolStartError where lsof cannot be started, and std::length_error where it prints more
/// than can be kept, for then rows would be missing; every other trouble is an empty list.
QList<PortInfo> fetchRunningPorts(const SystemInterfaces &system, const std::stop_token &stop);

/// Reads lsof's nine-column output (lsof(8), "OUTPUT"; the header line is skipped unread).
/// Listeners on wildcard and loopback addresses only, the first line of each port, ascending by
/// port, every address shown as "localhost". A line that does not fit is skipped. Pure.
QList<PortInfo> parsePortInfo(const QString &lsofOutput);

/// Whether the process name looks like a development runtime or service.
bool isDevelopmentProcess(const PortInfo &record);

} // namespace tidewick
