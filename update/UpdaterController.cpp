#include "update/UpdaterController.h"

#include "platform/session/Relaunch.h"
#include "update/PackageKit.h"
#include "update/UpdateNotices.h"
#include "update/UpdateSchedule.h"
#include "update/UpdateWindow.h"

#include <QCoroFuture>

#include <QCoreApplication>
#include <QPointer>

namespace tidewick
{
namespace
{

/// The system bus over a connection of our own, which is renewed after it broke.
QDBusConnection systemBus()
{
    const QString name = QStringLiteral("tidewick-updates");
    QDBusConnection known(name);
    if (known.isConnected())
        return known;
    QDBusConnection::disconnectFromBus(name);
    return QDBusConnection::connectToBus(QDBusConnection::SystemBus, name);
}

bool relaunch(const QString &executable)
{
    if (!relaunchAfterExit(executable))
        return false;
    QCoreApplication::quit();
    return true;
}

} // namespace

UpdaterSystem UpdaterSystem::real()
{
    // Read now, because after an upgrade the kernel calls this path deleted.
    const QString executable = QCoreApplication::applicationFilePath();
    UpdaterSystem system;
    system.bus = systemBus;
    system.executable = executable;
    system.isReplaced = [executable] {
        return tidewick::isReplaced(executable);
    };
    system.relaunch = [executable] {
        return tidewick::relaunch(executable);
    };
    system.now = QDateTime::currentDateTimeUtc;
    system.dialogs = std::make_unique<UpdateWindow>();
    return system;
}

UpdaterController::UpdaterController(bool startingUpdater, UpdaterSystem system)
    : m_system(std::move(system))
{
    m_system.dialogs->setAnswer([this](UpdateAction action) { answer(action); });
    if (startingUpdater)
        startSchedule();
}

UpdaterController::~UpdaterController()
{
    m_stop.request_stop();
}

void UpdaterController::startSchedule()
{
    m_firstCheck.setSingleShot(true);
    m_firstCheck.callOnTimeout(this, [this] {
        checkBySchedule();
        m_tick.start(m_system.tick);
    });
    m_tick.callOnTimeout(this, &UpdaterController::checkBySchedule);
    m_firstCheck.start(m_system.firstCheck);
}

void UpdaterController::checkBySchedule()
{
    if (!canCheckForUpdates())
        return;
    if (isCheckDue(m_lastCheck, m_system.now()))
        check(Refresh::ifOld);
    else if (m_haveUpdatesChanged)
        check(Refresh::never);
}

void UpdaterController::checkForUpdates()
{
    if (m_activity == Activity::installing) {
        m_system.dialogs->show(installationNotice(), UpdateDialogs::Focus::take);
        return;
    }
    m_isWatched = true;
    m_system.dialogs->show(checkingNotice(), UpdateDialogs::Focus::take);
    if (canCheckForUpdates())
        check(Refresh::always);
}

QCoro::Task<> UpdaterController::check(Refresh refresh)
{
    const QPointer<UpdaterController> self(this);
    m_activity = Activity::checking;
    m_haveUpdatesChanged = false;
    m_stop = {};
    const std::stop_token stop = m_stop.get_token();
    UpdateRequest request{connectedBus(), m_system.executable, refresh, m_isWatched};
    request.callTimeout = m_system.callTimeout;

    auto checking = checkForUpdate(std::move(request), stop);
    const UpdateOutcome outcome = co_await checking;
    if (!self || stop.stop_requested())
        co_return;
    if (refresh != Refresh::never)
        m_lastCheck = m_system.now();
    endActivity();
    conclude(outcome);
}

void UpdaterController::conclude(const UpdateOutcome &outcome)
{
    const bool isWatched = std::exchange(m_isWatched, false);
    if (outcome.kind == UpdateOutcome::available)
        m_found = outcome;
    if (isWatched) {
        const bool awaitsRestart = outcome.kind == UpdateOutcome::upToDate && m_system.isReplaced();
        m_system.dialogs->change(awaitsRestart ? installedNotice(outcome.installed)
                                               : outcomeNotice(outcome));
    } else if (outcome.kind == UpdateOutcome::available &&
               outcome.update.version != m_postponedVersion) {
        m_system.dialogs->show(outcomeNotice(outcome), UpdateDialogs::Focus::leave);
    }
}

QCoro::Task<> UpdaterController::install()
{
    const QPointer<UpdaterController> self(this);
    m_stop.request_stop(); // a scheduled check may run beside the offer
    m_activity = Activity::installing;
    m_isCancelling = false;
    m_progress = {};
    TransactionCall call = installationOf(m_found.update);
    call.callTimeout = m_system.callTimeout;
    m_installation = std::make_unique<PackageKitTransaction>(connectedBus(), std::move(call));
    connect(m_installation.get(), &PackageKitTransaction::progressed, this,
            [this](const TransactionProgress &progress) {
                m_progress = progress;
                m_system.dialogs->change(installationNotice());
            });
    m_system.dialogs->change(installationNotice());

    const QFuture<TransactionResult> ending = m_installation->ending();
    const TransactionResult result = co_await ending;
    if (!self)
        co_return;
    m_installation.reset();
    endActivity();
    concludeInstallation(result.failure);
}

UpdateNotice UpdaterController::installationNotice() const
{
    return m_isCancelling ? cancellingNotice(m_found.update)
                          : installingNotice(m_found.update, m_progress);
}

void UpdaterController::concludeInstallation(const std::optional<UpdateFailure> &failure)
{
    if (m_isCancelling && failure && failure->error == UpdateError::cancelled)
        m_system.dialogs->close();
    else
        m_system.dialogs->show(failure ? installationFailedNotice(*failure)
                                       : installedNotice(m_found.update),
                               UpdateDialogs::Focus::leave);
}

void UpdaterController::answer(UpdateAction action)
{
    switch (action) {
    case UpdateAction::cancel:
        cancel();
        return;
    case UpdateAction::install:
        install();
        return;
    case UpdateAction::restartNow:
        if (!m_system.relaunch())
            m_system.dialogs->change(restartFailedNotice());
        return;
    case UpdateAction::remindMeLater:
        m_postponedVersion = m_found.update.version;
        break;
    case UpdateAction::later:
    case UpdateAction::close:
        break;
    }
    m_system.dialogs->close();
}

void UpdaterController::cancel()
{
    if (m_activity == Activity::installing) {
        m_isCancelling = true;
        m_installation->cancel();
        m_system.dialogs->change(installationNotice());
        return;
    }
    m_stop.request_stop();
    m_isWatched = false;
    endActivity();
    m_system.dialogs->close();
}

void UpdaterController::endActivity()
{
    m_activity = Activity::none;
    m_sinceActivity.start();
}

QDBusConnection UpdaterController::connectedBus()
{
    QDBusConnection bus = m_system.bus();
    bus.connect(packagekit::service, packagekit::path, packagekit::interface,
                QStringLiteral("UpdatesChanged"), this, SLOT(noteUpdatesChanged()));
    return bus;
}

void UpdaterController::noteUpdatesChanged()
{
    const bool isOurs =
        m_sinceActivity.isValid() && m_sinceActivity.elapsed() < m_system.echo.count();
    if (canCheckForUpdates() && !isOurs)
        m_haveUpdatesChanged = true;
}

} // namespace tidewick
