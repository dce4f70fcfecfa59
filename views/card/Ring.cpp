#include "views/card/Ring.h"

#include <QPainter>

namespace tidewick
{

Ring::Ring(QQuickItem *parent) : Picture(parent)
{
    connect(this, &Ring::changed, this, &Ring::redraw);
}

void Ring::draw(QPainter &painter, const QRectF &place, double pixelsPerPoint) const
{
    const double radius = m_diameter / 2 * pixelsPerPoint;
    painter.setPen(QPen(m_color, m_lineWidth * pixelsPerPoint));
    painter.drawEllipse(place.center(), radius, radius);
}

} // namespace tidewick
