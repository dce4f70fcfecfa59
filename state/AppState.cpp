#include "state/AppState.h"

#include "scan/SocketScan.h"

#include <QCoroFuture>
#include <QCoroThread>

#include <QPointer>
#include <QScopeGuard>
#include <QThread>
#include <QThreadPool>
#include <QtConcurrent>

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

/// Whether /bin/kill ran and succeeded.
bool kill(const SystemInterfaces &system, const QString &pid, const std::stop_token &stop)
{
    try {
        const ToolResult result = system.tools->run(presentTool(system.toolTable.kill),
                                                    {QStringLiteral("-9"), pid}, stop);
        return result.exitStatus == 0;
    } catch (const ToolStartError &error) {
        printError("Error killing process: ", error);
        return false;
    }
}

bool isFull(const QThreadPool &pool)
{
    return pool.activeThreadCount() >= pool.maxThreadCount();
}

/// Runs `work` in the pool at once, in a thread more than its width where all are busy.
template <class Work>
auto startUrgently(QThreadPool &pool, Work work)
{
    const bool widens = isFull(pool);
    auto workThenShrink = [work = std::move(work), &pool, widens] {
        const auto shrink = qScopeGuard([&pool, widens] {
            if (widens)
                pool.reserveThread();
        });
        return work();
    };
    auto ending =
        QtConcurrent::task(std::move(workThenShrink)).onThreadPool(pool).withPriority(1).spawn();
    if (widens)
        pool.releaseThread(); // widens the pool by one thread, for the first in its queue
    return ending;
}

} // namespace

AppState::AppState(SystemInterfaces system, QThreadPool &pool, QObject *parent)
    : QObject(parent), m_system(std::move(system)), m_pool(pool)
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
        publish(m_lastError, outcome.error, &AppState::lastErrorChanged);
    } else {
        publish(m_runningPorts, outcome.runningPorts, &AppState::runningPortsChanged);
        publish(m_lastRefresh, QDateTime::currentDateTime(), &AppState::lastRefreshChanged);
    }
    publish(m_isLoading, false, &AppState::isLoadingChanged);
}

QFuture<ScanOutcome> AppState::startScan()
{
    if (isFull(m_pool) && m_latestScan && !m_latestScan->hasBegun)
        return m_latestScan->ending;
    m_latestScan = std::make_shared<Scan>();
    m_latestScan->ending = QtConcurrent::run(
        &m_pool, [own = m_latestScan, system = m_system, stop = m_stop.get_token()] {
            own->hasBegun = true;
            return scan(system, stop);
        });
    return m_latestScan->ending;
}

QCoro::Task<bool> AppState::killProcess(QString pid)
{
    const QPointer<AppState> self(this);
    const QFuture<void> marked =
        startUrgently(m_pool, [flag = m_isKillingProcess] { *flag = true; });
    co_await marked;
    if (!self)
        co_return false;
    removeRows(pid);

    const QFuture<bool> killing =
        startUrgently(m_pool, [system = m_system, pid, stop = m_stop.get_token()] {
            return kill(system, pid, stop);
        });
    const bool isKilled = co_await killing;
    if (!self)
        co_return isKilled;
    if (!isKilled) {
        auto rescan = loadRunningPorts();
        co_await rescan;
        if (!self)
            co_return false;
    }
    *m_isKillingProcess = false;
    co_return isKilled;
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
