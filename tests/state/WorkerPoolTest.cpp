#include "state/Workers.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QSemaphore>

#include <mutex>

#include <unistd.h>

using namespace tidewick;

TEST(Workers, areEightForScansAndTwoForKills)
{
    const Workers workers;
    EXPECT_EQ(workers.scans.maxThreadCount(), 8);
    EXPECT_EQ(workers.kills.maxThreadCount(), 2);
}

TEST(WorkerPool, allItsThreadsStartWithItAndServeLater)
{
    constexpr int width = 50;
    WorkerPool pool(width);
    EXPECT_LT(pool.expiryTimeout(), 0);
    const QStringList atFirst = QDir(QStringLiteral("/proc/self/task")).entryList();
    std::mutex mutex;
    QStringList used;
    QSemaphore running;
    QSemaphore gate;
    for (int i = 0; i < width; ++i) {
        pool.start([&] {
            {
                const std::lock_guard lock(mutex);
                used.append(QString::number(gettid()));
            }
            running.release();
            gate.acquire();
        });
    }
    running.acquire(width);
    gate.release(width);
    pool.waitForDone();
    EXPECT_EQ(used.size(), width);
    for (const QString &thread : used)
        EXPECT_TRUE(atFirst.contains(thread)) << thread.toStdString();
}
