#pragma once

#include <QThreadPool>

namespace tidewick
{

/// A pool whose threads all start with it and live as long. A thread that starts later may fail:
/// its task is lost and never delivers a result, or, without a free descriptor, GLib ends the
/// program.
class WorkerPool : public QThreadPool
{
public:
    /// Returns when all threads are idle.
    explicit WorkerPool(int width);
};

} // namespace tidewick
