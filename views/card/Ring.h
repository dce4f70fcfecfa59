#pragma once

#include "views/card/Pulse.h"
#include "views/controls/Picture.h"

#include <QColor>
#include <QPointer>

namespace tidewick
{

/// The ring of a badge, in the middle of an item that has room for it at its largest: a circle
/// around the badge that swells and fades as its pulse's value goes to 1, where it stays without a
/// pulse. Unlike a rounded rectangle of Qt Quick, it is smooth at every size without OpenGL. Rings
/// that move in step are drawn once.
class Ring : public tidewick::Picture
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(tidewick::Pulse *pulse READ pulse WRITE setPulse NOTIFY pulseChanged)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)
    /// In points, between the middles of the line.
    Q_PROPERTY(qreal diameter READ diameter NOTIFY changed)
    Q_PROPERTY(qreal lineWidth READ lineWidth NOTIFY changed)
    /// By how much its colour covers.
    Q_PROPERTY(qreal strength READ strength NOTIFY changed)

public:
    explicit Ring(QQuickItem *parent = nullptr);

    Pulse *pulse() const { return m_pulse; }
    void setPulse(Pulse *pulse);
    qreal diameter() const { return 42 * swelling(); }
    qreal lineWidth() const { return 1.5 * swelling(); }
    qreal strength() const { return 1 - 0.4 * phase(); }

Q_SIGNALS:
    void pulseChanged();
    void changed();

protected:
    QImage image(QSize pixels, double pixelsPerPoint) const override;

private:
    qreal phase() const { return m_pulse ? m_pulse->value() : 1; }
    qreal swelling() const { return 1 + 0.2 * phase(); }

    QPointer<Pulse> m_pulse;
    QColor m_color;
};

} // namespace tidewick
