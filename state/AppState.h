#pragma once

#include "model/PortInfo.h"
#include "scan/SystemInterfaces.h"
#include "state/Workers.h"

#include <QCoroTask>

#include <QDateTime>
#include <QFuture>
#include <QList>
#include <QObject>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <type_traits>

namespace tidewick
{

/// What a scan brings back to the main thread: a list or, where `error` is set, none.
struct ScanOutcome
{
    QList<PortInfo> runningPorts;
    std::optional<QString> error;
};

/// The one observable store of what is known about this machine's listeners, and its refresh
/// cycle: a scan at creation, one every 5 seconds, and one whenever somebody asks.
///
/// Lives on the main thread, as do all its signals. Scans and kills run on `workers`, which
/// must outlive the store; they may overlap, and the list published last wins. Destroying the store
/// stops the scans under way without waiting for them.
class AppState : public QObject
{
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds refreshInterval{5000};
    /// What a kill may take, the wait for those before it included. /bin/kill takes milliseconds.
    static constexpr std::chrono::milliseconds killTimeLimit{5000};

    AppState(SystemInterfaces system, Workers &workers, QObject *parent = nullptr);
    ~AppState() override;
    Q_DISABLE_COPY_MOVE(AppState)

    /// What the last good scan found, ascending by port.
    const QList<PortInfo> &runningPorts() const { return m_runningPorts; }
    bool isLoading() const { return m_isLoading; }
    /// Why the last scan failed; nothing once a new scan has started.
    const std::optional<QString> &lastError() const { return m_lastError; }
    /// When the last good scan ended; at first, when the store was created.
    const QDateTime &lastRefresh() const { return m_lastRefresh; }
    /// The running auto-refresh timer.
    const QTimer *refreshTimer() const { return m_refreshTimer.get(); }

    /// The value stream of one published property: `receive` gets its current value at once and
    /// then each new one, for as long as `context` and the store live.
    template <class Read, class Changed, class Receive>
    QMetaObject::Connection stream(Read read, Changed changed, QObject *context, Receive receive)
    {
        receive(std::invoke(read, this));
        return connect(this, changed, context, std::move(receive));
    }

    /// Starts a scan and returns at once; does nothing while a process is being killed.
    void refreshPorts();

    /// One whole scan and its publication. Never fails: a failure ends in `lastError` and the old
    /// list stays. Moves to the main thread first, whoever calls it.
    QCoro::Task<> loadRunningPorts();

    /// Ends the process `pid` at once, with a signal that cannot be caught. Its rows leave the list
    /// before the tool runs; where the tool fails, or is ended after `killTimeLimit`, a rescan
    /// brings back what still runs. True where /bin/kill ran and exited with 0; it does not run
    /// where `pid` is not the decimal number of one process. Moves to the main thread first,
    /// whoever calls it, and answers there; the tool runs in a pool thread.
    QCoro::Task<bool> killProcess(QString pid);

    /// (Re)starts the timer, whose first tick comes one interval from now.
    void startAutoRefresh();

    /// True while a process is being killed, the rescan after a failure included: refreshPorts()
    /// starts nothing then. Two kills at once each set and clear it by themselves.
    bool isKillingProcess() const { return m_isKillingProcess; }

Q_SIGNALS:
    /// Comes before each change of any published property; the old value can still be read.
    void objectWillChange();

    void runningPortsChanged(const QList<tidewick::PortInfo> &runningPorts);
    void isLoadingChanged(bool isLoading);
    void lastErrorChanged(const std::optional<QString> &lastError);
    void lastRefreshChanged(const QDateTime &lastRefresh);

private:
    template <class Value, class Changed>
    void publish(Value &property, std::type_identity_t<Value> value, Changed changed)
    {
        Q_EMIT objectWillChange();
        property = std::move(value);
        Q_EMIT std::invoke(changed, this, property);
    }

    /// A scan in the pool: waiting for a thread until it has begun.
    struct Scan
    {
        std::atomic<bool> hasBegun = false;
        QFuture<ScanOutcome> ending;
    };

    /// Hands a scan to the pool. Where the pool is full and a scan waits there already, that one
    /// serves this request too: it will see nothing older. So slow scans never queue up.
    QFuture<ScanOutcome> startScan();

    /// Hands a kill to the pool; its time limit begins.
    QFuture<bool> startKill(const QString &pid);

    /// Takes the rows of `pid` from the list, in one change.
    void removeRows(const QString &pid);

    SystemInterfaces m_system;
    Workers &m_workers;
    std::stop_source m_stop;
    std::shared_ptr<Scan> m_latestScan;
    QList<PortInfo> m_runningPorts;
    bool m_isLoading = false;
    std::optional<QString> m_lastError;
    QDateTime m_lastRefresh = QDateTime::currentDateTime();
    std::unique_ptr<QTimer> m_refreshTimer;
    bool m_isKillingProcess = false;
};

} // namespace tidewick
