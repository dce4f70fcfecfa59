#pragma once

#include <QEasingCurve>
#include <QObject>
#include <QtQmlIntegration>

namespace tidewick
{

/// The position after `t` seconds of a damped harmonic oscillator that starts at rest at 0 and is
/// drawn to 1. `response` is its undamped period in seconds. A `dampingFraction` of 1 is critical
/// damping; greater values count as 1.
double springPosition(double t, double response, double dampingFraction);

/// The movement of such a spring as duration and easing for an ordinary animation.
class Spring : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(qreal response MEMBER m_response NOTIFY changed)
    Q_PROPERTY(qreal dampingFraction MEMBER m_dampingFraction NOTIFY changed)
    /// Milliseconds until less than a thousandth of the distance is left.
    Q_PROPERTY(int duration READ duration NOTIFY changed)
    Q_PROPERTY(QEasingCurve easing READ easing NOTIFY changed)

public:
    using QObject::QObject;

    int duration() const;
    QEasingCurve easing() const;

Q_SIGNALS:
    void changed();

private:
    qreal m_response = 0.5;
    qreal m_dampingFraction = 1;
};

} // namespace tidewick
