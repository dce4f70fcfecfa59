#pragma once

#include <QEasingCurve>
#include <QObject>
#include <QtQmlIntegration>

namespace tidewick
{

/// Where a damped harmonic oscillator that starts at rest at 0 and is drawn to 1 stands after `t`
/// seconds. `response` is its undamped period in seconds, `dampingFraction` is 1 where it is
/// critically damped; greater values count as 1.
double springPosition(double t, double response, double dampingFraction);

/// The movement of such a spring as duration and easing for an ordinary animation.
class Spring : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(qreal response MEMBER m_response NOTIFY changed)
    Q_PROPERTY(qreal dampingFraction MEMBER m_dampingFraction NOTIFY changed)
    /// Milliseconds until less than a thousandth of the way is left.
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
