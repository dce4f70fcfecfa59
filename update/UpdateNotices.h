#pragma once

#include "update/UpdateCheck.h"
#include "update/UpdateDialogs.h"

namespace tidewick
{

/// The texts and buttons of each state of an update.
UpdateNotice checkingNotice();
UpdateNotice outcomeNotice(const UpdateOutcome &outcome);
UpdateNotice installingNotice(const PackageId &update, const TransactionProgress &progress);
/// After the user asked an installation to stop, until it has.
UpdateNotice cancellingNotice(const PackageId &update);
UpdateNotice installedNotice(const PackageId &id);
UpdateNotice installationFailedNotice(const UpdateFailure &failure);
/// The new version is there, but could not be started.
UpdateNotice restartFailedNotice();

} // namespace tidewick
