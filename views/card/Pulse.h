#pragma once

#include "views/card/WindowWatcher.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QtQmlIntegration>

namespace tidewick
{

/// The clock of all badges, so that their rings move in step. It ticks as often as the eye needs
/// for so slow a movement, and only while its window is on the screen.
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
    Q_PROPERTY(int interval READ interval CONSTANT)

public:
    explicit Pulse(QObject *parent = nullptr);

    bool isWanted() const { return m_isWanted; }
    void setWanted(bool isWanted);
    bool isRunning() const { return m_ticks.isActive(); }
    qreal value() const { return m_value; }
    int duration() const { return m_duration; }
    int interval() const { return m_ticks.interval(); }

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void isWantedChanged();
    void isRunningChanged();
    void valueChanged();

private:
    void startOrStop();
    void tick();
    void setValue(qreal value);

    bool m_isWanted = false;
    QTimer m_ticks;
    QElapsedTimer m_clock;
    const int m_duration = 1800;
    qreal m_value = 1;
};

} // namespace tidewick
