#include "views/Symbol.h"

#include <QPainter>
#include <QSvgRenderer>

namespace tidewick
{

Symbol::Symbol(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    connect(this, &Symbol::nameChanged, this, [this] { update(); });
    connect(this, &Symbol::colorChanged, this, [this] { update(); });
}

void Symbol::setSize(qreal size)
{
    if (size == implicitWidth())
        return;
    setImplicitSize(size, size);
    Q_EMIT sizeChanged();
}

void Symbol::paint(QPainter *painter)
{
    QSvgRenderer symbol(QStringLiteral(":/qt/qml/Tidewick/symbols/%1.svg").arg(m_name));
    if (!symbol.isValid())
        return;
    symbol.render(painter, boundingRect());
    // The pictures are white: what they cover takes the colour, opacity included.
    painter->setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter->fillRect(boundingRect(), m_color);
}

} // namespace tidewick
