#include "state/AppState.h"

#include "scan/SocketScan.h"
#include "state/Logging.h"
#include "text/Numbers.h"

#include <QCoroFuture>
#include <QCoroThread>

#include <QPointer>
#include <QScopeGuard>
#include <QThread>
#include <QtConcurrent>

#include <limits>

#include <sys/types.h>

namespace tidewick
{
namespace
{

/// Every path delivers an outcome, for an awaiter without one is lost.
ScanOutcome scan(const SystemInterfaces &system, const std::stop_token &stop)
{
    try {
        return {fetchRunningPorts(system, stop), std::nullopt};
    } catch (const ToolStartError &error) {
        return {{}, error.description()};
    } catch (const std::exception &error) {
        return {{}, QString::fromLocal8Bit(error.what())};
    }
}

/// Whether `pid` names one process. To /bin/kill "-1" names all there are, "0" the program's own
/// group, and a number beyond 32 bits whatever is left of it.
bool isProcessId(const QString &pid)
{
    const auto number = parseInteger(pid);
    return number && *number > 0 && *number <= std::numeric_limits<pid_t>::max();
}

/// Whether /bin/kill ran and succeeded. Every path delivers an answer, see scan().
bool kill(const SystemInterfaces &system, const QString &pid, const std::stop_token &stop)
{
    if (!isProcessId(pid) || stop.stop_requested())
        return false;
    try {
        const ToolResult result = system.tools->run(presentTool(system.toolTable.kill),
                                                    {QStringLiteral("-9"), pid}, stop);
        return result.exitStatus == 0;
    } catch (const std::exception &error) {
        printError("Error killing process: ", error);
        return false;
    } catch (...) {
        return false;
    }
}

template <class Work>
auto start(QThreadPool &pool, Work work)
{
    return QtConcurrent::task(std::move(work)).onThreadPool(pool).spawn();
}

bool isFull(const QThreadPool &pool)
{
    return pool.activeThreadCount() >= pool.maxThreadCount();
}

} // namespace

AppState::AppState(SystemInterfaces system, Workers &workers, QObject *parent)
    : QObject(parent), m_system(std::move(system)), m_workers(workers)
{
    refreshPorts();
    startAutoRefresh();
}

AppState::~AppState()
{
    m_stop.request_stop();
}

void AppState::refreshPorts()
{
    if (isKillingProcess())
        return;
    QMetaObject::invokeMethod(
        this, [this] { loadRunningPorts(); }, Qt::QueuedConnection);
}

QCoro::Task<> AppState::loadRunningPorts()
{
    const QPointer<AppState> self(this);
    auto mainThread = QCoro::moveToThread(thread());
    co_await std::move(mainThread);
    if (!self)
        co_return;
    publish(m_isLoading, true, &AppState::isLoadingChanged);
    publish(m_lastError, std::nullopt, &AppState::lastErrorChanged);

    const QFuture<ScanOutcome> ending = startScan();
    const ScanOutcome outcome = co_await ending;
    if (!self)
        co_return;
    if (outcome.error) {
        qCDebug(stateLog) << "scan failed:" << *outcome.error;
        publish(m_lastError, outcome.error, &AppState::lastErrorChanged);
    } else {
        publish(m_runningPorts, outcome.runningPorts, &AppState::runningPortsChanged);
        publish(m_lastRefresh, QDateTime::currentDateTime(), &AppState::lastRefreshChanged);
    }
    publish(m_isLoading, false, &AppState::isLoadingChanged);
}

QFuture<ScanOutcome> AppState::startScan()
{
    if (isFull(m_workers.scans) && m_latestScan && !m_latestScan->hasBegun) {
        qCDebug(stateLog) << "the scan that waits serves this request too";
        return m_latestScan->ending;
    }
    m_latestScan = std::make_shared<Scan>();
    auto work = [own = m_latestScan, system = m_system, stop = m_stop.get_token()] {
        own->hasBegun = true;
        return scan(system, stop);
    };
    m_latestScan->ending = start(m_workers.scans, std::move(work));
    return m_latestScan->ending;
}

QCoro::Task<bool> AppState::killProcess(QString pid)
{
    const QPointer<AppState> self(this);
    auto mainThread = QCoro::moveToThread(thread());
    co_await std::move(mainThread);
    if (!self)
        co_return false;
    m_isKillingProcess = true;
    const auto unmark = qScopeGuard([self] {
        if (self)
            self->m_isKillingProcess = false;
    });
    removeRows(pid);

    const QFuture<bool> killing = startKill(pid);
    const bool isKilled = co_await killing;
    qCDebug(stateLog) << "kill" << pid << (isKilled ? "succeeded" : "failed");
    if (!self)
        co_return isKilled;
    if (!isKilled) {
        auto rescan = loadRunningPorts();
        co_await rescan;
    }
    co_return isKilled;
}

QFuture<bool> AppState::startKill(const QString &pid)
{
    std::stop_source timeLimit;
    QTimer::singleShot(killTimeLimit, this, [timeLimit]() mutable { timeLimit.request_stop(); });
    return start(
        m_workers.kills, [system = m_system, pid, timeLimit, stop = m_stop.get_token()]() mutable {
            const std::stop_callback stopToo(stop, [&timeLimit] { timeLimit.request_stop(); });
            return kill(system, pid, timeLimit.get_token());
        });
}

void AppState::removeRows(const QString &pid)
{
    QList<PortInfo> others = m_runningPorts;
    others.removeIf([&pid](const PortInfo &record) { return record.pid() == pid; });
    publish(m_runningPorts, others, &AppState::runningPortsChanged);
}

void AppState::startAutoRefresh()
{
    m_refreshTimer = std::make_unique<QTimer>();
    m_refreshTimer->setTimerType(Qt::PreciseTimer);
    m_refreshTimer->callOnTimeout(this, &AppState::refreshPorts);
    m_refreshTimer->start(refreshInterval);
}

} // namespace tidewick
