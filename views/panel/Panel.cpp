#include "views/panel/Panel.h"

#include <QPointer>
#include <QTimer>

#include <chrono>

namespace tidewick
{

Panel::Panel(AppState &state, QObject *parent) : QObject(parent), m_state(state)
{
    m_state.stream(&AppState::isLoading, &AppState::isLoadingChanged, this,
                   [this](bool) { Q_EMIT isLoadingChanged(); });
    m_state.stream(&AppState::runningPorts, &AppState::runningPortsChanged, this,
                   [this](const QList<PortInfo> &runningPorts) {
                       m_ports.setRecords(runningPorts);
                       Q_EMIT countsChanged();
                   });
}

int Panel::liveCount() const
{
    return static_cast<int>(tidewick::liveCount(m_state.runningPorts()));
}

void Panel::refresh()
{
    m_state.refreshPorts();
}

void Panel::kill(const QString &pid)
{
    killAndShow(pid);
}

QCoro::Task<> Panel::killAndShow(QString pid)
{
    const QPointer<Panel> self(this);
    setKillingPid(pid);
    auto killing = m_state.killProcess(pid);
    const bool isKilled = co_await killing;
    if (!self)
        co_return;
    if (!isKilled)
        setKillingPid({});
    QTimer::singleShot(std::chrono::milliseconds(200), this, [this] { setKillingPid({}); });
}

void Panel::setKillingPid(const QString &pid)
{
    if (pid == m_killingPid)
        return;
    m_killingPid = pid;
    Q_EMIT killingPidChanged();
}

void Panel::setBackdrop(Backdrop backdrop)
{
    if (backdrop == m_backdrop)
        return;
    m_backdrop = backdrop;
    Q_EMIT backdropChanged();
}

void Panel::setReducesMotion(bool reducesMotion)
{
    if (reducesMotion == m_reducesMotion)
        return;
    m_reducesMotion = reducesMotion;
    Q_EMIT reducesMotionChanged();
}

void Panel::openPort(const QString &port)
{
    const QUrl url(QStringLiteral("http://localhost:") + port, QUrl::StrictMode);
    if (url.isValid())
        Q_EMIT openRequested(url);
}

void Panel::revealDirectory(const QString &path)
{
    Q_EMIT revealRequested(path);
}

void Panel::quit()
{
    Q_EMIT quitRequested();
}

} // namespace tidewick
