#include "views/controls/Symbol.h"

#include <QPainter>
#include <QSvgRenderer>

namespace tidewick
{

Symbol::Symbol(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    connect(this, &Symbol::nameChanged, this, [this] { update(); });
    connect(this, &Symbol::colorChanged, this, [this] { update(); });
    connect(this, &Symbol::angleChanged, this, [this] { update(); });
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
    const QRectF place = boundingRect();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->translate(place.center());
    painter->rotate(m_angle);
    painter->translate(-place.center());
    drawSymbol(*painter, m_name, place, m_color);
}

bool drawSymbol(QPainter &painter, const QString &name, const QRectF &place, const QColor &color)
{
    QSvgRenderer symbol(QStringLiteral(":/qt/qml/Tidewick/controls/symbols/%1.svg").arg(name));
    if (!symbol.isValid())
        return false;
    symbol.render(&painter, place);
    // The pictures are white. Their pixels take the colour and its opacity.
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(place, color);
    return true;
}

} // namespace tidewick
