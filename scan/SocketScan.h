#pragma once

#include "model/PortInfo.h"
#include "scan/SystemInterfaces.h"

#include <QList>
#include <QString>

#include <stop_token>

namespace tidewick
{

/// One whole scan: the development listeners of this machine, enriched, ascending by port.
/// Blocks; call it in a pool thread. A stop request ends it early with a useless list. Throws
/// ToolStartError if lsof cannot be started, and std::length_error if lsof prints more than can be
/// kept, because rows would be missing. Any other failure gives an empty list.
QList<PortInfo> fetchRunningPorts(const SystemInterfaces &system, const std::stop_token &stop);

/// Parses lsof's nine-column output (lsof(8), "OUTPUT"); the header line is skipped unread. The
/// result has the first line of each port on a wildcard or loopback address, ascending by port,
/// with every address as "localhost". A line that does not fit is skipped. Pure.
QList<PortInfo> parsePortInfo(const QString &lsofOutput);

/// Whether the process name looks like a development runtime or service.
bool isDevelopmentProcess(const PortInfo &record);

} // namespace tidewick
