#include "views/controls/Symbol.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

#include <cmath>
#include <map>
#include <utility>

namespace tidewick
{
namespace
{

/// The width of a line, in points, where a symbol has its usual size.
QByteArray lineWidth(int weight)
{
    if (weight >= QFont::DemiBold)
        return "1.8";
    return weight >= QFont::Medium ? "1.5" : "1.4";
}

/// The drawing of a symbol. The side of its view box is the symbol's usual size in points, and its
/// straight lines run through the middles of pixels there. Lines of the usual width take that of
/// the weight.
QByteArray drawing(const QString &name, int weight)
{
    QFile file(QStringLiteral(":/qt/qml/Tidewick/controls/symbols/%1.svg").arg(name));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll().replace("stroke-width=\"1.4\"",
                                  "stroke-width=\"" + lineWidth(weight) + '"');
}

/// The symbol, read once: one that turns is drawn sixty times a second.
QSvgRenderer &rendererOf(const QString &name, int weight)
{
    static std::map<std::pair<QString, int>, QSvgRenderer> renderers;
    const auto [found, isNew] = renderers.try_emplace({name, weight});
    if (isNew)
        found->second.load(drawing(name, weight));
    return found->second;
}

} // namespace

Symbol::Symbol(QQuickItem *parent) : Picture(parent)
{
    connect(this, &Symbol::changed, this, &Symbol::redraw);
}

void Symbol::setSize(qreal size)
{
    if (size == implicitWidth())
        return;
    setImplicitSize(size, size);
    Q_EMIT sizeChanged();
}

void Symbol::draw(QPainter &painter, const QRectF &place, double /*pixelsPerPoint*/) const
{
    painter.translate(place.center());
    painter.rotate(m_angle);
    painter.translate(-place.center());
    QRectF square({}, place.size() * (size() / width()));
    square.moveCenter(place.center());
    drawSymbol(painter, m_name, square, m_color, m_weight);
}

int Symbol::overhang(QSize pixels, double /*pixelsPerPoint*/) const
{
    // Half of what a square's diagonal is longer than its side.
    return m_angle == 0 ? 0 : static_cast<int>(std::ceil(pixels.width() * 0.21));
}

bool drawSymbol(QPainter &painter, const QString &name, const QRectF &place, const QColor &color,
                int weight)
{
    QSvgRenderer &symbol = rendererOf(name, weight);
    if (!symbol.isValid())
        return false;
    symbol.render(&painter, place);
    // The drawings are white. Their pixels take the colour and its opacity.
    painter.resetTransform();
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(painter.viewport(), color);
    return true;
}

} // namespace tidewick
