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
    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override;
    Q_DISABLE_COPY_MOVE(TerminationSignals)

Q_SIGNALS:
    void received();
};

} // namespace tidewick
