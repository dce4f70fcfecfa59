#pragma once

#include <QDateTime>

#include <optional>

namespace tidewick
{

/// Whether a day has passed by the wall clock since the last check, or the clock was set back
/// before it. So a wrong clock never delays the next check for long.
inline bool isCheckDue(const std::optional<QDateTime> &lastCheck, const QDateTime &now)
{
    constexpr qint64 daySeconds = 86400;
    return !lastCheck || now < *lastCheck || lastCheck->secsTo(now) >= daySeconds;
}

} // namespace tidewick
