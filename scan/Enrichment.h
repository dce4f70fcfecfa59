#pragma once

#include "model/PortInfo.h"
#include "scan/SystemInterfaces.h"

#include <QStringView>

#include <stop_token>

namespace tidewick
{

/// Returns `record` completed: four tool runs, one after another, then the classification and the
/// HTTP probe. Never fails: a step that finds nothing leaves its fields unchanged, and a tool that
/// cannot be started costs one line on standard output. Blocks; call it in a pool thread. A stop
/// request ends it early.
PortInfo enrichPortInfo(PortInfo record, const SystemInterfaces &system,
                        const std::stop_token &stop);

/// Seconds in ps's elapsed time, [[DD-]hh:]mm:ss (ps(1), "etime"); 0 for any other text.
double parseElapsedTime(QStringView text);

/// Seconds in [[hh:]mm:]ss. A piece that is no number is skipped; without any number, or with four
/// or more, the result is 0. A sum beyond 64 bits ends the program.
double parseHMS(QStringView text);

} // namespace tidewick
