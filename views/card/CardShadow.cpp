#include "views/card/CardShadow.h"

#include <QPainter>
#include <QPainterPath>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGTexture>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <vector>

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

/// The picture and its pieces, for one number of pixels in a point.
class ShadowNode : public QSGNode
{
public:
    ShadowNode(QQuickWindow &window, double pixelsPerPoint)
        : pixelsPerPoint(pixelsPerPoint),
          m_texture(window.createTextureFromImage(cardShadowImage(pixelsPerPoint)))
    {
        for (QSGImageNode *&piece : m_pieces) {
            piece = window.createImageNode();
            piece->setTexture(m_texture.get());
            piece->setFiltering(QSGTexture::Nearest);
            appendChildNode(piece);
        }
    }

    void surround(QSizeF card)
    {
        const double right = card.width() + reach;
        const double bottom = card.height() + reach;
        const std::array<double, 4> xs{-reach, patch - reach, right - patch, right};
        const std::array<double, 4> ys{-reach, patch - reach, bottom - patch, bottom};
        const double size = m_texture->textureSize().width();
        const double corner = std::ceil(patch * pixelsPerPoint);
        const std::array<double, 4> pixels{0, corner, size - corner, size};
        std::size_t index = 0;
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = 0; column < 3; ++column, ++index) {
                m_pieces[index]->setRect(
                    QRectF(QPointF(xs[column], ys[row]), QPointF(xs[column + 1], ys[row + 1])));
                m_pieces[index]->setSourceRect(
                    QRectF(QPointF(pixels[column], pixels[row]),
                           QPointF(pixels[column + 1], pixels[row + 1])));
            }
        }
    }

    const double pixelsPerPoint;

private:
    std::unique_ptr<QSGTexture> m_texture;
    std::array<QSGImageNode *, 9> m_pieces{};
};

} // namespace

QImage cardShadowImage(double pixelsPerPoint)
{
    // One stretched pixel between the corners.
    const int side = 2 * static_cast<int>(std::ceil(patch * pixelsPerPoint)) + 1;
    const double points = side / pixelsPerPoint;
    const QRectF card(reach, reach, points - 2 * reach, points - 2 * reach);
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

CardShadow::CardShadow(QQuickItem *parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

QSGNode *CardShadow::updatePaintNode(QSGNode *old, UpdatePaintNodeData * /*data*/)
{
    const double pixelsPerPoint = window()->effectiveDevicePixelRatio();
    auto *node = static_cast<ShadowNode *>(old);
    if (node != nullptr && node->pixelsPerPoint != pixelsPerPoint) {
        delete node;
        node = nullptr;
    }
    if (node == nullptr)
        node = new ShadowNode(*window(), pixelsPerPoint);
    node->surround(size());
    return node;
}

void CardShadow::itemChange(ItemChange change, const ItemChangeData &data)
{
    if (change == ItemDevicePixelRatioHasChanged)
        update();
    QQuickItem::itemChange(change, data);
}

void CardShadow::geometryChange(const QRectF &now, const QRectF &before)
{
    QQuickItem::geometryChange(now, before);
    update();
}

} // namespace tidewick
