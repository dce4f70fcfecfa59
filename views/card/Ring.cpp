#include "views/card/Ring.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tidewick
{
namespace
{

struct Circle
{
    QPointF middle;
    double radius = 0; // to the middle of the line
    double lineWidth = 0;
};

/// How much of the pixel at `column` and `row` is line, from 0 to 1.
double coverage(const Circle &circle, int column, int row)
{
    const double x = column + 0.5 - circle.middle.x();
    const double y = row + 0.5 - circle.middle.y();
    const double fromLine = std::abs(std::sqrt(x * x + y * y) - circle.radius);
    return std::clamp(circle.lineWidth / 2 + 0.5 - fromLine, 0.0, std::min(1.0, circle.lineWidth));
}

/// QPainter hands so many short lines to another thread and waits for it, twenty times a second.
QImage imageOf(const Circle &circle, QSize size, QColor color)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    for (int row = 0; row < size.height(); ++row) {
        auto *const pixels = reinterpret_cast<QRgb *>(image.scanLine(row));
        for (int column = 0; column < size.width(); ++column) {
            const double alpha = 255 * color.alphaF() * coverage(circle, column, row);
            pixels[column] =
                qPremultiply(qRgba(color.red(), color.green(), color.blue(), qRound(alpha)));
        }
    }
    return image;
}

} // namespace

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
    const Circle circle{place.center() - place.topLeft(), m_diameter / 2 * pixelsPerPoint,
                        m_lineWidth * pixelsPerPoint};
    painter.drawImage(place.topLeft(), imageOf(circle, place.size().toSize(), m_color));
}

} // namespace tidewick
