#include "views/card/Pulse.h"

#include <QEasingCurve>
#include <QEvent>

#include <chrono>
#include <cmath>

namespace tidewick
{

Pulse::Pulse(QObject *parent) : WindowWatcher(parent)
{
    m_ticks.setInterval(std::chrono::milliseconds(50));
    connect(&m_ticks, &QTimer::timeout, this, &Pulse::tick);
    connect(this, &Pulse::windowChanged, this, &Pulse::startOrStop);
}

void Pulse::setWanted(bool isWanted)
{
    if (isWanted == m_isWanted)
        return;
    m_isWanted = isWanted;
    startOrStop();
    Q_EMIT isWantedChanged();
}

bool Pulse::eventFilter(QObject * /*watched*/, QEvent *event)
{
    if (event->type() == QEvent::Expose)
        startOrStop();
    return false;
}

void Pulse::startOrStop()
{
    const bool isDue = m_isWanted && window() && window()->isExposed();
    if (isDue == isRunning())
        return;
    if (isDue) {
        m_clock.start();
        m_ticks.start();
    } else {
        m_ticks.stop();
        setValue(1);
    }
    Q_EMIT isRunningChanged();
}

void Pulse::tick()
{
    const double turns = static_cast<double>(m_clock.elapsed()) / m_duration;
    const double way = std::abs(std::fmod(turns, 2) - 1); // from 1 to 0 and back
    // Where it hardly moves, it need not be drawn again.
    constexpr double steps = 48;
    setValue(std::round(QEasingCurve(QEasingCurve::InOutQuad).valueForProgress(way) * steps) /
             steps);
}

void Pulse::setValue(qreal value)
{
    if (value == m_value)
        return;
    m_value = value;
    Q_EMIT valueChanged();
}

} // namespace tidewick
