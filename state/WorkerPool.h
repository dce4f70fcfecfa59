#pragma once

#include <QThreadPool>

namespace tidewick
{

/// A pool whose threads all start with it and stay to its end, so that no work waits for one that
/// the system cannot give: a thread that fails to start takes its task along, and whoever awaits
/// that, and one that starts without a descriptor left ends the program (GLib's wake-up pipe).
class WorkerPool : public QThreadPool
{
public:
    /// Comes back with all threads idle.
    explicit WorkerPool(int width);
};

} // namespace tidewick
