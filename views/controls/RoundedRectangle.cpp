#include "views/controls/RoundedRectangle.h"

#include <QPainter>

#include <algorithm>

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

} // namespace tidewick
