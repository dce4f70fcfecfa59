#pragma once

#include "views/card/WindowWatcher.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QtQmlIntegration>

namespace tidewick
{

/// The clock of all badges, so that their rings move in step: out and back, eased at both ends. It
/// moves them by equal parts of the way, so that each frame shows something new and none shows more
/// than the eye follows; and only while its window is on the screen.
class Pulse : public tidewick::WindowWatcher
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool isWanted READ isWanted WRITE setWanted NOTIFY isWantedChanged)
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY isRunningChanged)
    /// How far out the rings are, from 0 to 1; 1 at rest.
    Q_PROPERTY(qreal value READ value NOTIFY valueChanged)
    /// Milliseconds from one end to the other.
    Q_PROPERTY(int duration READ duration CONSTANT)
    /// The parts of the way.
    Q_PROPERTY(int steps READ steps CONSTANT)

public:
    explicit Pulse(QObject *parent = nullptr);

    bool isWanted() const { return m_isWanted; }
    void setWanted(bool isWanted);
    bool isRunning() const { return m_ticks.isActive(); }
    qreal value() const { return m_value; }
    int duration() const { return m_duration; }
    int steps() const { return m_steps; }

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void isWantedChanged();
    void isRunningChanged();
    void valueChanged();

private:
    void startOrStop();
    void tick();
    void awaitNextStep();
    /// When, in milliseconds from the start, the way to the `number`th step is half gone.
    double timeOfStep(int number) const;
    void setValue(qreal value);

    bool m_isWanted = false;
    QTimer m_ticks;
    QElapsedTimer m_clock;
    const int m_duration = 1800;
    const int m_steps = 20;
    int m_step = 0; // since the start
    qreal m_value = 1;
};

} // namespace tidewick
