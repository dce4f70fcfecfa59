#pragma once

#include "platform/Updater.h"
#include "update/UpdateCheck.h"
#include "update/UpdateDialogs.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>

namespace tidewick
{

/// What the updater needs of the machine, and its times.
struct UpdaterSystem
{
    std::function<QDBusConnection()> bus; ///< asked for at each check
    QString executable;                   ///< the program that runs
    std::function<bool()> isReplaced;     ///< the program's path holds another file
    std::function<bool()> relaunch;       ///< ends this run and starts the next
    std::function<QDateTime()> now;       ///< the wall clock
    std::unique_ptr<UpdateDialogs> dialogs;

    std::chrono::milliseconds firstCheck = std::chrono::minutes(5);
    std::chrono::milliseconds tick = std::chrono::hours(1);
    /// How late the service's signal may come after a check of ours that caused it.
    std::chrono::milliseconds echo = std::chrono::seconds(30);
    std::chrono::milliseconds callTimeout = std::chrono::seconds(25);

    /// The running program, the system bus, and windows.
    static UpdaterSystem real();
};

/// Updates of this program's package through the system's package service: checks when asked, by a
/// schedule of its own, and installs. A scheduled check shows nothing unless it finds an update,
/// and then does not take the focus. "Remind Me Later" silences the schedule about that version for
/// this run; nothing is stored.
class UpdaterController : public QObject, public Updater
{
    Q_OBJECT

public:
    /// `startingUpdater` starts the schedule.
    explicit UpdaterController(bool startingUpdater, UpdaterSystem system = UpdaterSystem::real());
    ~UpdaterController() override;
    Q_DISABLE_COPY_MOVE(UpdaterController)

    void checkForUpdates() override;
    bool canCheckForUpdates() const override { return m_activity == Activity::none; }

private Q_SLOTS:
    void noteUpdatesChanged();

private:
    enum class Activity { none, checking, installing };

    void startSchedule();
    void checkBySchedule();
    QCoro::Task<> check(Refresh refresh);
    void conclude(const UpdateOutcome &outcome);
    QCoro::Task<> install();
    UpdateNotice installationNotice() const;
    void concludeInstallation(const std::optional<UpdateFailure> &failure);
    void answer(UpdateAction action);
    void cancel();
    void endActivity();
    QDBusConnection connectedBus();

    UpdaterSystem m_system;
    QTimer m_firstCheck;
    QTimer m_tick;
    std::optional<QDateTime> m_lastCheck;
    QElapsedTimer m_sinceActivity;
    bool m_haveUpdatesChanged = false; ///< the service said so, not because of our own check

    Activity m_activity = Activity::none;
    bool m_isWatched = false; ///< the user sees the check and is told any result
    std::stop_source m_stop;  ///< of the check that runs
    UpdateOutcome m_found;    ///< the update on offer
    QString m_postponedVersion;
    std::unique_ptr<PackageKitTransaction> m_installation;
    TransactionProgress m_progress;
    bool m_isCancelling = false;
};

} // namespace tidewick
