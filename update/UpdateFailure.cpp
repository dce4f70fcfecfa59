#include "update/UpdateFailure.h"

#include "text/Truncated.h"
#include "text/VisibleText.h"
#include "update/PackageKit.h"

#include <algorithm>
#include <initializer_list>

namespace tidewick
{
namespace
{

constexpr qsizetype maxLine = 200;
constexpr qsizetype maxParagraphs = 4000;

UpdateError errorOfCode(uint code)
{
    using namespace packagekit;
    switch (code) {
    case errorNoNetwork:
        return UpdateError::noNetwork;
    case errorPackageDownloadFailed:
    case errorPackageCorrupt:
        return UpdateError::download;
    case errorGpgFailure:
    case errorBadGpgSignature:
    case errorMissingGpgSignature:
    case errorCannotInstallUnsigned:
    case errorCannotUpdateUnsigned:
        return UpdateError::untrusted;
    case errorDependencyResolutionFailed:
    case errorFileConflicts:
    case errorPackageConflicts:
        return UpdateError::dependencies;
    case errorPackageNotInstalled:
    case errorPackageNotFound:
    case errorNoPackagesToUpdate:
    case errorUpdateNotFound:
        return UpdateError::noLongerOffered;
    case errorTransactionCancelled:
    case errorCancelledForPriority:
        return UpdateError::cancelled;
    case errorCannotGetLock:
    case errorLockRequired:
        return UpdateError::locked;
    case errorRepositoryConfiguration:
    case errorRepositoryNotAvailable:
    case errorNoMoreMirrors:
    case errorCannotFetchSources:
        return UpdateError::sources;
    case errorNoSpaceOnDevice:
        return UpdateError::noSpace;
    case errorNotAuthorized:
        return UpdateError::notAuthorized;
    case errorPackageFailedToConfigure:
    case errorPackageFailedToInstall:
        return UpdateError::installation;
    case errorUnfinishedTransaction:
        return UpdateError::unfinished;
    default:
        return UpdateError::other;
    }
}

UpdateError errorOfName(const QString &name)
{
    const auto isAnyOf = [&name](std::initializer_list<const char *> names) {
        return std::any_of(names.begin(), names.end(), [&name](const char *one) {
            return name == QLatin1String("org.freedesktop.DBus.Error.") + QLatin1String(one);
        });
    };
    if (isAnyOf({"ServiceUnknown", "NameHasNoOwner"}))
        return UpdateError::noService;
    if (isAnyOf({"NoReply", "Timeout", "TimedOut"}))
        return UpdateError::timedOut;
    if (isAnyOf({"Disconnected", "NoServer"}))
        return UpdateError::noBus;
    if (isAnyOf({"AccessDenied", "AuthFailed"}) || name.endsWith(QLatin1String(".RefusedByPolicy")))
        return UpdateError::notAuthorized;
    if (name.startsWith(QLatin1String("org.freedesktop.DBus.Error.Spawn.")) ||
        name.startsWith(QLatin1String("org.freedesktop.systemd1.")))
        return UpdateError::startFailed;
    return UpdateError::other;
}

} // namespace

QString sentence(UpdateError error)
{
    switch (error) {
    case UpdateError::noBus:
        return QStringLiteral("The system bus cannot be reached.");
    case UpdateError::noService:
        return QStringLiteral("This system has no update service: PackageKit is not installed.");
    case UpdateError::startFailed:
        return QStringLiteral("The system's update service could not be started.");
    case UpdateError::timedOut:
        return QStringLiteral("The system's update service did not answer in time.");
    case UpdateError::vanished:
        return QStringLiteral("The system's update service stopped before it was done.");
    case UpdateError::cancelled:
        return QStringLiteral("The system's update service was told to stop.");
    case UpdateError::locked:
        return QStringLiteral("Another program is installing software; try again when it is done.");
    case UpdateError::noNetwork:
        return QStringLiteral("There is no network connection.");
    case UpdateError::download:
        return QStringLiteral("The update could not be downloaded, or arrived damaged.");
    case UpdateError::untrusted:
        return QStringLiteral("The update is not signed by a source that this system trusts.");
    case UpdateError::sources:
        return QStringLiteral("A package source could not be reached.");
    case UpdateError::notAuthorized:
        return QStringLiteral("You are not permitted to do this, or no password was given.");
    case UpdateError::noSpace:
        return QStringLiteral("There is not enough space on the disk.");
    case UpdateError::dependencies:
        return QStringLiteral("The update does not fit the other software on this system.");
    case UpdateError::noLongerOffered:
        return QStringLiteral("The update is no longer offered.");
    case UpdateError::unfinished:
        return QStringLiteral(
            "An earlier installation of software on this system was not finished.");
    case UpdateError::installation:
        return QStringLiteral("The downloaded update could not be installed.");
    case UpdateError::other:
        break;
    }
    return QStringLiteral("The system's update service reported an error.");
}

UpdateFailure failureOfErrorCode(uint code, const QString &details)
{
    return {errorOfCode(code), asParagraphs(details)};
}

UpdateFailure failureOfExit(uint exit)
{
    switch (exit) {
    case packagekit::exitCancelled:
    case packagekit::exitCancelledForPriority:
        return {UpdateError::cancelled, {}};
    case packagekit::exitKeyRequired:
    case packagekit::exitNeedUntrusted:
        return {UpdateError::untrusted, {}};
    case packagekit::exitKilled:
        return {UpdateError::vanished, {}};
    default:
        return {UpdateError::other, QStringLiteral("exit %1").arg(exit)};
    }
}

UpdateFailure failureOfCall(const QDBusError &error)
{
    return {errorOfName(error.name()),
            asParagraphs(error.name() + QLatin1Char('\n') + error.message())};
}

QString asLine(const QString &text)
{
    return truncated(visibleText(text.left(2 * maxLine)).simplified(), maxLine);
}

QString asParagraphs(const QString &text)
{
    return truncated(visibleLines(text.left(2 * maxParagraphs)).trimmed(), maxParagraphs);
}

} // namespace tidewick
