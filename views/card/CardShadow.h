#pragma once

#include "views/controls/Picture.h"

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

/// The shadow around a card of this item's size, without shaders, which the scene graph lacks. It
/// extends beyond the item's edges. Cards of one size share its pixels.
class CardShadow : public tidewick::Picture
{
    Q_OBJECT
    QML_ELEMENT

public:
    using Picture::Picture;

protected:
    int overhang(QSize pixels, double pixelsPerPoint) const override;
    QList<PicturePiece> pieces(QSize pixels, double pixelsPerPoint) const override;
};

} // namespace tidewick
