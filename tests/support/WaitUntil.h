#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <chrono>

/// Runs the event loop until `condition` holds; false where it does not within `milliseconds`.
/// It looks after each event and every 5 ms, and sleeps between.
template <class Condition>
bool waitUntil(Condition condition, int milliseconds = 10000)
{
    using namespace std::chrono_literals;
    QElapsedTimer timer;
    timer.start();
    QTimer look;
    look.start(5ms);
    while (!condition()) {
        if (timer.elapsed() > milliseconds)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}
