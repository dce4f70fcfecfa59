#include "views/card/Ring.h"

#include <QPainter>

namespace tidewick
{

Ring::Ring(QQuickItem *parent) : Picture(parent)
{
    connect(this, &Ring::changed, this, &Ring::redraw);
}

QImage Ring::image(QSize pixels, double pixelsPerPoint) const
{
    struct Drawn
    {
        bool operator==(const Drawn &) const = default;

        QSize pixels;
        double pixelsPerPoint = 0;
        double diameter = 0;
        double lineWidth = 0;
        QColor color;
    };
    static Drawn last;
    static QImage lastImage;
    const Drawn wanted{pixels, pixelsPerPoint, m_diameter, m_lineWidth, m_color};
    if (!(last == wanted)) {
        lastImage = Picture::image(pixels, pixelsPerPoint);
        last = wanted;
    }
    return lastImage;
}

void Ring::draw(QPainter &painter, const QRectF &place, double pixelsPerPoint) const
{
    const double radius = m_diameter / 2 * pixelsPerPoint;
    painter.setPen(QPen(m_color, m_lineWidth * pixelsPerPoint));
    painter.drawEllipse(place.center(), radius, radius);
}

} // namespace tidewick
