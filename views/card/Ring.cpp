#include "views/card/Ring.h"

#include <QPainter>

namespace tidewick
{

Ring::Ring(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    connect(this, &Ring::changed, this, [this] { update(); });
}

void Ring::paint(QPainter *painter)
{
    painter->setPen(QPen(m_color, m_lineWidth));
    painter->drawEllipse(boundingRect().center(), m_diameter / 2, m_diameter / 2);
}

} // namespace tidewick
