#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

namespace tidewick
{

/// `value` with this many decimals, as C's printf gives it in the C locale: the exact value is
/// rounded, and a half goes to the even digit.
QString formatFixed(double value, int decimals);

/// Percent as "12% CPU".
QString formatCpu(double percent);

/// Megabytes as "512 MB", from 1024 on as "1.0 GB". The threshold is tested before rounding.
QString formatMemory(double megabytes);

/// How long a process has run at `now`: "<1m", "5m", "2h 5m", "3d"; empty without a start.
QString formatUptime(const std::optional<QDateTime> &startTime,
                     const QDateTime &now = QDateTime::currentDateTime());

/// The same for `seconds`. A number of minutes, hours or days that is not finite or passes 64 bits
/// ends the program.
QString formatElapsed(double seconds);

} // namespace tidewick
