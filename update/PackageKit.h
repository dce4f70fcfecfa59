#pragma once

#include <QString>

/// Names and numbers of PackageKit's D-Bus interface.
/// https://www.freedesktop.org/software/PackageKit/gtk-doc/api-reference.html
namespace tidewick::packagekit
{

inline const QString service = QStringLiteral("org.freedesktop.PackageKit");
inline const QString path = QStringLiteral("/org/freedesktop/PackageKit");
inline const QString interface = service;
inline const QString transactionInterface =
    QStringLiteral("org.freedesktop.PackageKit.Transaction");

/// PkErrorEnum
enum Error : uint {
    errorNoNetwork = 2,
    errorGpgFailure = 5,
    errorPackageNotInstalled = 7,
    errorPackageNotFound = 8,
    errorPackageDownloadFailed = 10, // a wrong checksum included
    errorDependencyResolutionFailed = 13,
    errorTransactionCancelled = 17,
    errorCannotGetLock = 26,
    errorNoPackagesToUpdate = 27,
    errorBadGpgSignature = 30,
    errorMissingGpgSignature = 31,
    errorRepositoryConfiguration = 33,
    errorFileConflicts = 35,
    errorPackageConflicts = 36,
    errorRepositoryNotAvailable = 37,
    errorPackageCorrupt = 40,
    errorNoMoreMirrors = 43,
    errorNoSpaceOnDevice = 46,
    errorNotAuthorized = 48, // refused, no agent, or its dialog closed
    errorUpdateNotFound = 49,
    errorCannotInstallUnsigned = 50,
    errorCannotUpdateUnsigned = 51,
    errorPackageFailedToConfigure = 56,
    errorPackageFailedToInstall = 58,
    errorCannotFetchSources = 64,
    errorCancelledForPriority = 65,
    errorUnfinishedTransaction = 66,
    errorLockRequired = 67,
};

/// PkExitEnum
enum Exit : uint {
    exitSuccess = 1,
    exitCancelled = 3,
    exitKeyRequired = 4,
    exitKilled = 6,
    exitNeedUntrusted = 8,
    exitCancelledForPriority = 9,
};

/// PkStatusEnum
enum Status : uint {
    statusWait = 1,
    statusDownload = 8,
    statusInstall = 9,
    statusUpdate = 10,
    statusCommit = 16,
    statusWaitingForLock = 30,
    statusWaitingForAuthorization = 31,
};

/// PkInfoEnum. Newer services put a severity in the upper half.
enum Info : uint {
    infoBlocked = 9,
    infoMask = 0xffff,
};

/// PkRoleEnum
enum Role : uint { roleRefreshCache = 13 };

/// PkFilterEnum, as bits
enum Filter : qulonglong {
    filterNone = 1U << 1,
    filterInstalled = 1U << 2,
    filterNewest = 1U << 16,
    filterArchitecture = 1U << 18,
};

/// PkTransactionFlagEnum, as bits
enum Flag : qulonglong { flagOnlyTrusted = 1U << 1 };

} // namespace tidewick::packagekit
