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
    // No task ends before the last has its thread, so each gets one of its own.
    const auto gate = std::make_shared<QSemaphore>();
    for (int i = 0; i < width; ++i)
        start([gate] { gate->acquire(); });
    gate->release(width);
    // Until a thread waits for work it counts as busy.
    const QDeadlineTimer timeout(1000);
    while (activeThreadCount() > 0 && !timeout.hasExpired())
        QThread::yieldCurrentThread();
}

} // namespace tidewick
