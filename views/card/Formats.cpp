#include "views/card/Formats.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

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
    if (quotient >= 0x1p63)
        qFatal("tidewick: an uptime does not fit 64 bits");
    return static_cast<qint64>(quotient);
}

} // namespace

QString formatFixed(double value, int decimals)
{
    // The longest has a sign, all digits of the greatest number, a point and the decimals.
    std::array<char, std::numeric_limits<double>::max_exponent10 + 32> text{};
    const auto written = std::to_chars(text.data(), text.data() + text.size(), value,
                                       std::chars_format::fixed, decimals);
    return QString::fromLatin1(text.data(), written.ptr - text.data());
}

QString formatCpu(double percent)
{
    return formatFixed(percent, 0) + QStringLiteral("% CPU");
}

QString formatMemory(double megabytes)
{
    constexpr double megabytesInAGigabyte = 1024;
    if (megabytes >= megabytesInAGigabyte)
        return formatFixed(megabytes / megabytesInAGigabyte, 1) + QStringLiteral(" GB");
    return formatFixed(megabytes, 0) + QStringLiteral(" MB");
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
