#include "views/controls/RoundedRectangle.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tidewick
{
namespace
{

/// `place` without a margin, with round corners; `radius` is that of `place`.
void drawWithin(QPainter &painter, const QRectF &place, double margin, double radius)
{
    const double inner = std::max(0.0, radius - margin);
    painter.drawRoundedRect(place.adjusted(margin, margin, -margin, -margin), inner, inner);
}

} // namespace

RoundedRectangle::RoundedRectangle(QQuickItem *parent) : Picture(parent)
{
    connect(this, &RoundedRectangle::changed, this, &RoundedRectangle::redraw);
}

void RoundedRectangle::draw(QPainter &painter, const QRectF &place, double pixelsPerPoint) const
{
    const double radius =
        std::min(m_radius * pixelsPerPoint, std::min(place.width(), place.height()) / 2);
    const double border = m_borderWidth * pixelsPerPoint;
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_color);
    drawWithin(painter, place, border, radius);
    if (border <= 0)
        return;
    painter.setPen(QPen(m_borderColor, border));
    painter.setBrush(Qt::NoBrush);
    drawWithin(painter, place, border / 2, radius);
}

QList<PicturePiece> RoundedRectangle::pieces(QSize pixels, double pixelsPerPoint) const
{
    const QImage all = image(pixels, pixelsPerPoint);
    if (m_color.alpha() > 0)
        return {{all, {}}};
    // Below three fifths of a corner's height, its line is within a tenth of its width.
    const double high = 0.6 * m_radius * pixelsPerPoint;
    const double wide = 0.1 * m_radius * pixelsPerPoint;
    const double line = m_borderWidth * pixelsPerPoint + 1;
    QList<PicturePiece> sides;
    for (const QRect &side : sidesOf(pixels, static_cast<int>(std::ceil(std::max(high, line))),
                                     static_cast<int>(std::ceil(wide + line))))
        sides.append({all.copy(side), side.topLeft()});
    return sides;
}

} // namespace tidewick
