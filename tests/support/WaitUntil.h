#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

/// Runs the event loop until `condition` holds; false where it does not within `milliseconds`.
template <class Condition>
bool waitUntil(Condition condition, int milliseconds = 10000)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > milliseconds)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}
