#pragma once

#include "views/controls/Picture.h"

#include <QColor>

namespace tidewick
{

/// A circle in the middle of an item that has room for it at its largest. Unlike a rounded
/// rectangle of Qt Quick, it is smooth at every size without OpenGL. Rings that move in step are
/// drawn once.
class Ring : public tidewick::Picture
{
    Q_OBJECT
    QML_ELEMENT
    /// In points, between the middles of the line.
    Q_PROPERTY(qreal diameter MEMBER m_diameter NOTIFY changed)
    Q_PROPERTY(qreal lineWidth MEMBER m_lineWidth NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)

public:
    explicit Ring(QQuickItem *parent = nullptr);

Q_SIGNALS:
    void changed();

protected:
    QImage image(QSize pixels, double pixelsPerPoint) const override;
    void draw(QPainter &painter, const QRectF &place, double pixelsPerPoint) const override;

private:
    qreal m_diameter = 0;
    qreal m_lineWidth = 1;
    QColor m_color;
};

} // namespace tidewick
