#pragma once

#include "state/WorkerPool.h"

#include <QDeadlineTimer>

namespace tidewick
{

/// The threads that the store's work runs in: those of the scans, and a few that are the kills'
/// own, so that scans which hang hold up none.
struct Workers
{
    /// As a rule wide enough that a few scans stuck in a tool leave room for the next.
    explicit Workers(int scansAtOnce = 8) : scans(scansAtOnce) {}

    /// Whether all work ends within so many milliseconds, without a limit where they are negative.
    bool waitForDone(int milliseconds = -1)
    {
        const QDeadlineTimer deadline(milliseconds);
        return scans.waitForDone(milliseconds) && kills.waitForDone(int(deadline.remainingTime()));
    }

    WorkerPool scans;
    WorkerPool kills{2};
};

} // namespace tidewick
