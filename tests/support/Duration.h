#pragma once

#include <gtest/gtest.h>

#include <QElapsedTimer>

#include <algorithm>
#include <chrono>
#include <limits>

/// Whether `act` takes less than `most` when nothing else holds it up: in one of up to five tries.
/// A busy machine may delay some of them.
template <class Act>
testing::AssertionResult takesLessThan(std::chrono::milliseconds most, Act act)
{
    qint64 shortest = std::numeric_limits<qint64>::max();
    for (int tries = 0; tries < 5; ++tries) {
        QElapsedTimer timer;
        timer.start();
        act();
        shortest = std::min(shortest, timer.elapsed());
        if (shortest < most.count())
            return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "it takes " << shortest << " ms at least";
}
