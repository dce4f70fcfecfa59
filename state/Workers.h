#pragma once

#include "state/WorkerPool.h"

#include <QDeadlineTimer>

namespace tidewick
{

/// The threads of the store's work: some for scans, and a few for kills alone, so that hanging
/// scans delay no kill.
struct Workers
{
    /// Wide enough that a few scans stuck in a tool usually leave room for the next.
    explicit Workers(int scansAtOnce = 8) : scans(scansAtOnce) {}

    /// Whether all work ends within this many milliseconds; negative means no limit.
    bool waitForDone(int milliseconds = -1)
    {
        const QDeadlineTimer deadline(milliseconds);
        return scans.waitForDone(milliseconds) && kills.waitForDone(int(deadline.remainingTime()));
    }

    WorkerPool scans;
    WorkerPool kills{2};
};

} // namespace tidewick
