#include "update/UpdateNotices.h"

#include "update/PackageKit.h"

namespace tidewick
{
namespace
{

const QList<UpdateButton> onlyClose{{UpdateAction::close}};

/// A version for display, cleaned because it comes from another process.
QString versionOf(const PackageId &id)
{
    return asLine(id.version);
}

UpdateNotice availableNotice(const UpdateOutcome &outcome)
{
    UpdateNotice notice;
    notice.heading = QStringLiteral("Tidewick %1 is available").arg(versionOf(outcome.update));
    notice.text = QStringLiteral("You have version %1.").arg(versionOf(outcome.installed));
    if (!outcome.summary.isEmpty())
        notice.text += QLatin1Char('\n') + outcome.summary;
    notice.buttons = {{UpdateAction::install}, {UpdateAction::remindMeLater}};
    notice.onClose = UpdateAction::remindMeLater;
    return notice;
}

QString heldBackText(const UpdateOutcome &outcome)
{
    return QStringLiteral("This system holds it back. You have version %1.")
        .arg(versionOf(outcome.installed));
}

/// What the service is at, from its status (PkStatusEnum).
QString activity(uint status)
{
    switch (status) {
    case packagekit::statusWait:
    case packagekit::statusWaitingForLock:
        return QStringLiteral("Waiting for the package system…");
    case packagekit::statusWaitingForAuthorization:
        return QStringLiteral("Waiting for your permission…");
    case packagekit::statusDownload:
        return QStringLiteral("Downloading…");
    case packagekit::statusInstall:
    case packagekit::statusUpdate:
    case packagekit::statusCommit:
        return QStringLiteral("Installing…");
    default:
        return QStringLiteral("Preparing…");
    }
}

QString installingHeading(const PackageId &update)
{
    return QStringLiteral("Installing Tidewick %1").arg(versionOf(update));
}

} // namespace

UpdateNotice checkingNotice()
{
    UpdateNotice notice;
    notice.heading = QStringLiteral("Checking for updates…");
    notice.text = QStringLiteral("The system's package sources are asked.");
    notice.progress = UpdateProgress{};
    notice.buttons = {{UpdateAction::cancel}};
    notice.onClose = UpdateAction::cancel;
    return notice;
}

UpdateNotice outcomeNotice(const UpdateOutcome &outcome)
{
    switch (outcome.kind) {
    case UpdateOutcome::available:
        return availableNotice(outcome);
    case UpdateOutcome::upToDate:
        return {.heading = QStringLiteral("Tidewick is up to date"),
                .text = QStringLiteral("You have the newest version, %1.")
                            .arg(versionOf(outcome.installed)),
                .buttons = onlyClose};
    case UpdateOutcome::heldBack:
        return {.heading =
                    QStringLiteral("Tidewick %1 is held back").arg(versionOf(outcome.update)),
                .text = heldBackText(outcome),
                .buttons = onlyClose};
    case UpdateOutcome::notPackaged:
        return {.heading = QStringLiteral("This copy cannot be updated here"),
                .text = QStringLiteral("Tidewick was not installed from a package."),
                .buttons = onlyClose};
    case UpdateOutcome::notOffered:
        return {.heading = QStringLiteral("This copy cannot be updated here"),
                .text = QStringLiteral("None of this system's package sources offers Tidewick."),
                .buttons = onlyClose};
    case UpdateOutcome::failed:
        break;
    }
    return {.heading = QStringLiteral("Updates could not be checked"),
            .text = sentence(outcome.failure.error),
            .details = outcome.failure.details,
            .buttons = onlyClose};
}

UpdateNotice installingNotice(const PackageId &update, const TransactionProgress &progress)
{
    return {.heading = installingHeading(update),
            .text = activity(progress.status),
            .progress = UpdateProgress{progress.percentage},
            .buttons = {{UpdateAction::cancel, progress.canCancel}}};
}

UpdateNotice cancellingNotice(const PackageId &update)
{
    return {.heading = installingHeading(update),
            .text = QStringLiteral("Stopping…"),
            .progress = UpdateProgress{},
            .buttons = {{UpdateAction::cancel, false}}};
}

UpdateNotice installedNotice(const PackageId &id)
{
    return {.heading = QStringLiteral("Tidewick %1 is installed").arg(versionOf(id)),
            .text = QStringLiteral("It is used from the next start on."),
            .buttons = {{UpdateAction::restartNow}, {UpdateAction::later}},
            .onClose = UpdateAction::later};
}

UpdateNotice installationFailedNotice(const UpdateFailure &failure)
{
    return {.heading = QStringLiteral("The update could not be installed"),
            .text = sentence(failure.error),
            .details = failure.details,
            .buttons = onlyClose};
}

UpdateNotice restartFailedNotice()
{
    return {.heading = QStringLiteral("Tidewick could not be restarted"),
            .text = QStringLiteral("Quit it and start it again to use the new version."),
            .buttons = onlyClose};
}

} // namespace tidewick
