#pragma once

#include <QObject>

namespace tidewick
{

/// Turns SIGINT, SIGTERM and SIGHUP into `received` on the main thread, for as long as this object
/// lives. A signal that is ignored from the start (nohup(1)) stays ignored. One object at a
/// time.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    /// A program that has not ended so long after the first signal is stuck, and SIGTERM ends it.
    /// Quitting takes half a second.
    static constexpr unsigned secondsToEnd = 10;

    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override;
    Q_DISABLE_COPY_MOVE(TerminationSignals)

Q_SIGNALS:
    void received();
};

} // namespace tidewick
