#include "state/AppState.h"

#include "scan/SocketScan.h"

#include <QCoroFuture>
#include <QCoroThread>

#include <QPointer>
#include <QThread>
#include <QtConcurrentRun>

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
    if (isKillingProcess)
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
    if (m_latestScan && !m_latestScan->hasBegun)
        return m_latestScan->ending;
    m_latestScan = std::make_shared<Scan>();
    m_latestScan->ending = QtConcurrent::run(
        &m_pool, [own = m_latestScan, system = m_system, stop = m_stop.get_token()] {
            own->hasBegun = true;
            return scan(system, stop);
        });
    return m_latestScan->ending;
}

void AppState::startAutoRefresh()
{
    m_refreshTimer = std::make_unique<QTimer>();
    m_refreshTimer->callOnTimeout(this, &AppState::refreshPorts);
    m_refreshTimer->start(refreshInterval);
}

} // namespace tidewick
