#include "views/card/Pulse.h"

#include <QEvent>

#include <algorithm>
#include <cmath>

namespace tidewick
{
namespace
{

/// When an ease-in-out movement from 0 to 1 has come as far as `place`, as a part of its time.
double timeOf(double place)
{
    return place < 0.5 ? std::sqrt(place / 2) : 1 - std::sqrt((1 - place) / 2);
}

} // namespace

Pulse::Pulse(QObject *parent) : WindowWatcher(parent)
{
    m_ticks.setSingleShot(true);
    m_ticks.setTimerType(Qt::PreciseTimer);
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
        m_step = 0;
        awaitNextStep();
    } else {
        m_ticks.stop();
        setValue(1);
    }
    Q_EMIT isRunningChanged();
}

void Pulse::tick()
{
    // Steps whose time has gone by are left out.
    while (timeOfStep(m_step + 1) <= static_cast<double>(m_clock.elapsed()))
        ++m_step;
    awaitNextStep();
    setValue(std::abs(1 - static_cast<double>(m_step % (2 * m_steps)) / m_steps));
}

void Pulse::awaitNextStep()
{
    const double wait = timeOfStep(m_step + 1) - static_cast<double>(m_clock.elapsed());
    m_ticks.start(std::max(1, static_cast<int>(std::ceil(wait))));
}

double Pulse::timeOfStep(int number) const
{
    const int swing = (number - 1) / m_steps;
    const double place = ((number - 1) % m_steps + 0.5) / m_steps;
    return (swing + timeOf(place)) * m_duration;
}

void Pulse::setValue(qreal value)
{
    if (value == m_value)
        return;
    m_value = value;
    Q_EMIT valueChanged();
}

} // namespace tidewick
