#pragma once

#include <QImage>
#include <QQuickItem>
#include <QtQmlIntegration>

namespace tidewick
{

/// The shadow's measures, in points.
namespace card_shadow
{
constexpr double radius = 8;  // how far it spreads
constexpr double drop = 4;    // how far below the card it lies
constexpr double corner = 14; // the card's corners
constexpr double opacity = 0.25;
constexpr double reach = radius + drop;           // how far from the card's edges the picture ends
constexpr double patch = reach + corner + radius; // a corner of the picture; the rest is stretched
} // namespace card_shadow

/// The shadow of a card just large enough for two corners on each side, without the part that the
/// card covers.
QImage cardShadowImage(double pixelsPerPoint);

/// The shadow around a card of this item's size, made of nine pieces of one picture, because the
/// scene graph has no shadow without shaders. It extends beyond the item's edges.
class CardShadow : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT

public:
    explicit CardShadow(QQuickItem *parent = nullptr);

protected:
    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *data) override;
    void itemChange(ItemChange change, const ItemChangeData &data) override;
    void geometryChange(const QRectF &now, const QRectF &before) override;
};

} // namespace tidewick
