#pragma once

#include "update/PackageKitTransaction.h"

#include <QCoroTask>

namespace tidewick
{

/// When a check lets the service fetch the lists of its sources anew.
enum class Refresh { always, ifOld, never };

struct UpdateRequest
{
    QDBusConnection bus;
    QString executable; ///< the program whose package is looked for
    Refresh refresh = Refresh::always;
    /// The user waits for it, and may be asked for a password.
    bool isInteractive = false;
    std::chrono::milliseconds callTimeout = std::chrono::seconds(25);
    /// How long the service may say nothing at all before it is given up.
    std::chrono::milliseconds timeout = std::chrono::minutes(2);
    std::chrono::milliseconds refreshTimeout = std::chrono::minutes(5);
};

/// What a check found.
struct UpdateOutcome
{
    enum Kind {
        upToDate,
        available,
        heldBack,    ///< there is a newer one, but this system keeps it from being installed
        notPackaged, ///< the program belongs to no installed package
        notOffered,  ///< its package was installed by hand, no source offers it
        failed
    };
    Kind kind = failed;
    PackageId installed;   ///< unless notPackaged or failed
    PackageId update;      ///< where available or heldBack
    QString summary;       ///< of the update, one line; may be empty
    UpdateFailure failure; ///< where failed
};

/// Asks the package service on `request.bus` whether a newer version of the program is to be had.
/// A stop ends it as failed with UpdateError::cancelled. It never tells that the program is up to
/// date after the lists could not be fetched.
QCoro::Task<UpdateOutcome> checkForUpdate(UpdateRequest request, std::stop_token stop);

/// `path` as a pattern that finds nothing else: PackageKit's apt takes a basic regular expression.
QString searchPattern(const QString &path);

/// What installs `update`, if it is signed by a source that the system trusts.
TransactionCall installationOf(const PackageId &update);

} // namespace tidewick
