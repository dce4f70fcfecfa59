#pragma once

#include "model/PortInfo.h"
#include "scan/SystemInterfaces.h"

#include <QStringView>

#include <stop_token>

namespace tidewick
{

/// Returns `record` with all that can be learnt of its process and of what it answers: four tool
/// runs, one after another, then the classification and the HTTP probe. Never fails: a step that
/// finds nothing leaves its fields, and a tool that cannot be started is one line on standard
/// output. Blocks; call it in a pool thread. A stop request ends it early.
PortInfo enrichPortInfo(PortInfo record, const SystemInterfaces &system,
                        const std::stop_token &stop);

/// Seconds in ps's elapsed time, [[DD-]hh:]mm:ss (ps(1), "etime"); 0 for any other text.
double parseElapsedTime(QStringView text);

/// Seconds in [[hh:]mm:]ss. A piece that is no number is passed over; without one, or with four
/// or more, 0. Numbers whose sum passes 64 bits end the program.
double parseHMS(QStringView text);

} // namespace tidewick
