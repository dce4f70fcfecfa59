#pragma once

#include <QDateTime>

#include <optional>

namespace tidewick
{

/// Whether a day has passed by the wall clock since the last check, or the clock was set back
/// behind it, so that no clock set wrong puts the next check off for long.
inline bool isCheckDue(const std::optional<QDateTime> &lastCheck, const QDateTime &now)
{
    constexpr qint64 daySeconds = 86400;
    return !lastCheck || now < *lastCheck || lastCheck->secsTo(now) >= daySeconds;
}

} // namespace tidewick
