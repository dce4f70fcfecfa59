#include "views/Formats.h"

#include <cmath>

namespace tidewick
{
namespace
{

constexpr double minute = 60;
constexpr double hour = 60 * minute;
constexpr double day = 24 * hour;

/// `seconds / unit`, truncated toward zero.
qint64 whole(double seconds, double unit)
{
    const double quotient = seconds / unit;
    if (!std::isfinite(quotient))
        qFatal("tidewick: an uptime is not finite");
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (quotient <= -limit || quotient >= limit)
        qFatal("tidewick: an uptime does not fit 64 bits");
    return static_cast<qint64>(quotient);
}

} // namespace

QString formatMemory(double megabytes)
{
    constexpr double megabytesInAGigabyte = 1024;
    if (megabytes >= megabytesInAGigabyte)
        return QString::asprintf("%.1f GB", megabytes / megabytesInAGigabyte);
    return QString::asprintf("%.0f MB", megabytes);
}

QString formatUptime(const std::optional<QDateTime> &startTime, const QDateTime &now)
{
    if (!startTime)
        return {};
    constexpr double millisecondsInASecond = 1000;
    return formatElapsed(static_cast<double>(startTime->msecsTo(now)) / millisecondsInASecond);
}

QString formatElapsed(double seconds)
{
    if (seconds < minute)
        return QStringLiteral("<1m");
    if (seconds < hour)
        return QStringLiteral("%1m").arg(whole(seconds, minute));
    if (seconds >= day || !std::isfinite(seconds))
        return QStringLiteral("%1d").arg(whole(seconds, day));
    const qint64 hours = whole(seconds, hour);
    const qint64 minutes = whole(std::fmod(seconds, hour), minute);
    return minutes < 1 ? QStringLiteral("%1h").arg(hours)
                       : QStringLiteral("%1h %2m").arg(hours).arg(minutes);
}

} // namespace tidewick
