#include "views/card/CardShadow.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tidewick
{
namespace
{

using namespace card_shadow;

/// The signed distance of a point from a rounded rectangle: negative inside.
double distance(QPointF point, const QRectF &card, double cornerRadius)
{
    const QPointF fromMiddle = point - card.center();
    const double x = std::abs(fromMiddle.x()) - card.width() / 2 + cornerRadius;
    const double y = std::abs(fromMiddle.y()) - card.height() / 2 + cornerRadius;
    return std::hypot(std::max(x, 0.0), std::max(y, 0.0)) + std::min(std::max(x, y), 0.0) -
           cornerRadius;
}

/// How dark a blurred edge is at this distance. The blur's deviation is half its radius.
double darkness(double distance)
{
    return opacity * std::erfc(distance / (radius / 2 * std::sqrt(2.0))) / 2;
}

/// How far the picture reaches beyond the card, in pixels.
int pixelsBeyond(double pixelsPerPoint)
{
    return static_cast<int>(std::ceil(reach * pixelsPerPoint));
}

/// The pixel of `shadow` that the pixel `index` of `count` shows in a larger one, whose straight
/// sides repeat the middle.
int source(int index, int count, int shadow)
{
    const int corner = shadow / 2;
    return index < corner ? index : std::max(corner, index + shadow - count);
}

/// This part of the shadow of `size`.
QImage partOf(const QImage &shadow, QSize size, const QRect &part)
{
    QImage image(part.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < part.height(); ++y) {
        auto *const pixels = reinterpret_cast<QRgb *>(image.scanLine(y));
        const auto *const sources = reinterpret_cast<const QRgb *>(
            shadow.constScanLine(source(part.y() + y, size.height(), shadow.height())));
        for (int x = 0; x < part.width(); ++x)
            pixels[x] = sources[source(part.x() + x, size.width(), shadow.width())];
    }
    return image;
}

QList<PicturePiece> sidesOfShadow(QSize card, double pixelsPerPoint)
{
    static double scale = 0;
    static QImage shadow;
    if (std::exchange(scale, pixelsPerPoint) != pixelsPerPoint)
        shadow = cardShadowImage(pixelsPerPoint);
    const int beyond = pixelsBeyond(pixelsPerPoint);
    const QSize size = card + 2 * QSize(beyond, beyond);
    // Below three fifths of a corner's height, its line is within a tenth of its width.
    const int high = beyond + static_cast<int>(std::ceil(0.6 * corner * pixelsPerPoint));
    const int wide = beyond + static_cast<int>(std::ceil(0.1 * corner * pixelsPerPoint)) + 1;
    QList<PicturePiece> sides;
    for (const QRect &side : sidesOf(size, high, wide))
        sides.append({partOf(shadow, size, side), side.topLeft()});
    return sides;
}

} // namespace

QImage cardShadowImage(double pixelsPerPoint)
{
    // One stretched pixel between the corners.
    const int side = 2 * static_cast<int>(std::ceil(patch * pixelsPerPoint)) + 1;
    const double points = side / pixelsPerPoint;
    const double beyond = pixelsBeyond(pixelsPerPoint) / pixelsPerPoint;
    const QRectF card(beyond, beyond, points - 2 * beyond, points - 2 * beyond);
    const QRectF below = card.translated(0, drop);
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const QPointF point((x + 0.5) / pixelsPerPoint, (y + 0.5) / pixelsPerPoint);
            const double outside =
                std::clamp(distance(point, card, corner) * pixelsPerPoint + 0.5, 0.0, 1.0);
            const double alpha = darkness(distance(point, below, corner)) * outside;
            image.setPixel(x, y, qRgba(0, 0, 0, static_cast<int>(std::lround(alpha * 255))));
        }
    }
    return image;
}

int CardShadow::overhang(QSize /*pixels*/, double pixelsPerPoint) const
{
    return pixelsBeyond(pixelsPerPoint);
}

QList<PicturePiece> CardShadow::pieces(QSize pixels, double pixelsPerPoint) const
{
    static std::pair<QSize, double> last;
    static QList<PicturePiece> lastPieces;
    if (std::exchange(last, {pixels, pixelsPerPoint}) != std::pair(pixels, pixelsPerPoint))
        lastPieces = sidesOfShadow(pixels, pixelsPerPoint);
    return lastPieces;
}

} // namespace tidewick
