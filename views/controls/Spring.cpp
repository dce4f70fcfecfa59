#include "views/controls/Spring.h"

#include <QPointF>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tidewick
{
namespace
{

constexpr double millisecondsInASecond = 1000;

struct Oscillator
{
    Oscillator(double response, double dampingFraction)
        : frequency(2 * std::numbers::pi / response),
          damping(std::min(dampingFraction, 1.0)),
          dampedFrequency(frequency * std::sqrt(1 - damping * damping))
    {
    }

    bool isCritical() const { return dampedFrequency < 1e-6 * frequency; }

    double position(double t) const
    {
        const double decay = std::exp(-damping * frequency * t);
        if (isCritical())
            return 1 - decay * (1 + frequency * t);
        return 1 - decay * (std::cos(dampedFrequency * t) +
                            damping * frequency / dampedFrequency * std::sin(dampedFrequency * t));
    }

    double velocity(double t) const
    {
        const double decay = std::exp(-damping * frequency * t);
        if (isCritical())
            return frequency * frequency * t * decay;
        return decay * frequency * frequency / dampedFrequency * std::sin(dampedFrequency * t);
    }

    /// Seconds until about a thousandth of the distance is left.
    double settlingTime() const
    {
        return (isCritical() ? 9.23 : std::log(1000.0) / damping) / frequency;
    }

    double frequency; // radians a second
    double damping;
    double dampedFrequency;
};

} // namespace

double springPosition(double t, double response, double dampingFraction)
{
    return Oscillator(response, dampingFraction).position(t);
}

int Spring::duration() const
{
    const double seconds = Oscillator(m_response, m_dampingFraction).settlingTime();
    return static_cast<int>(std::lround(seconds * millisecondsInASecond));
}

QEasingCurve Spring::easing() const
{
    // Cubic pieces that have the position and velocity of the closed form where they meet. There
    // are ten, because Qt 6.4 corrupted its memory with sixteen.
    constexpr int pieces = 10;
    const Oscillator spring(m_response, m_dampingFraction);
    const double time = spring.settlingTime();
    const double step = time / pieces;
    QEasingCurve curve(QEasingCurve::BezierSpline);
    for (int piece = 0; piece < pieces; ++piece) {
        const double from = piece * step;
        const double to = from + step;
        const double end = piece + 1 == pieces ? 1 : spring.position(to);
        curve.addCubicBezierSegment(
            {(from + step / 3) / time, spring.position(from) + spring.velocity(from) * step / 3},
            {(to - step / 3) / time, end - spring.velocity(to) * step / 3}, {to / time, end});
    }
    return curve;
}

} // namespace tidewick
