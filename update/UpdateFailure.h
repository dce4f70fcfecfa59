#pragma once

#include <QDBusError>
#include <QString>

namespace tidewick
{

/// Why a check or an installation came to nothing, as far as the user can tell the reasons apart.
enum class UpdateError {
    noBus,
    noService,
    startFailed,
    timedOut,
    vanished,
    cancelled,
    locked,
    noNetwork,
    download,
    untrusted,
    sources,
    notAuthorized,
    noSpace,
    dependencies,
    noLongerOffered,
    unfinished,
    installation,
    other
};

struct UpdateFailure
{
    UpdateError error = UpdateError::other;
    QString details; ///< the service's own words: plain text of bounded length, may be empty

    bool operator==(const UpdateFailure &) const = default;
};

/// One plain sentence for the user.
QString sentence(UpdateError error);

/// `code` and `details` as the ErrorCode signal carries them (PkErrorEnum).
UpdateFailure failureOfErrorCode(uint code, const QString &details);
/// `exit` as the Finished signal carries it (PkExitEnum), other than success and without an
/// ErrorCode before it.
UpdateFailure failureOfExit(uint exit);
/// A call that the bus or the service answered with an error.
UpdateFailure failureOfCall(const QDBusError &error);

/// Text of another process for one line of a dialog: no line breaks, no control characters, short.
QString asLine(const QString &text);
/// The same for a field of several lines.
QString asParagraphs(const QString &text);

} // namespace tidewick
