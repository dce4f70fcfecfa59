#include "state/WorkerPool.h"

#include <QDeadlineTimer>
#include <QSemaphore>
#include <QThread>

#include <memory>

namespace tidewick
{

WorkerPool::WorkerPool(int width)
{
    setMaxThreadCount(width);
    setExpiryTimeout(-1);
    // No task ends before the last has started, so each gets a thread of its own.
    const auto gate = std::make_shared<QSemaphore>();
    for (int i = 0; i < width; ++i)
        start([gate] { gate->acquire(); });
    gate->release(width);
    // A thread counts as busy until it waits for work.
    const QDeadlineTimer timeout(1000);
    while (activeThreadCount() > 0 && !timeout.hasExpired())
        QThread::yieldCurrentThread();
}

} // namespace tidewick
