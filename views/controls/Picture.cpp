#include "views/controls/Picture.h"

#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGTexture>

#include <algorithm>
#include <cmath>

namespace tidewick
{

Picture::Picture(QQuickItem *parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

void Picture::redraw()
{
    m_isStale = true;
    update();
}

QImage Picture::image(QSize pixels, double pixelsPerPoint) const
{
    const int beyond = overhang(pixels);
    QImage image(pixels + 2 * QSize(beyond, beyond), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    draw(painter, QRect(QPoint(beyond, beyond), pixels), pixelsPerPoint);
    return image;
}

QSGNode *Picture::updatePaintNode(QSGNode *old, UpdatePaintNodeData * /*data*/)
{
    const double pixelsPerPoint = window()->effectiveDevicePixelRatio();
    const QSize pixels((size() * pixelsPerPoint).toSize());
    if (pixels.isEmpty()) {
        delete old;
        m_isStale = true;
        return nullptr;
    }
    auto *node = static_cast<QSGImageNode *>(old);
    if (node == nullptr) {
        node = window()->createImageNode();
        node->setOwnsTexture(true);
        // This changes only what stands in a scaled item.
        node->setFiltering(QSGTexture::Linear);
        m_isStale = true;
    }
    if (m_isStale) {
        node->setTexture(window()->createTextureFromImage(image(pixels, pixelsPerPoint)));
        node->setSourceRect(QRectF({}, node->texture()->textureSize()));
        m_isStale = false;
    }
    // Both edges are rounded to the same side, also halfway between two pixels.
    constexpr double nudge = 1.0 / 64;
    QRectF place({}, QSizeF(node->texture()->textureSize()) / pixelsPerPoint);
    place.moveCenter(boundingRect().center() - QPointF(nudge, nudge) / pixelsPerPoint);
    node->setRect(place);
    return node;
}

void Picture::itemChange(ItemChange change, const ItemChangeData &data)
{
    if (change == ItemDevicePixelRatioHasChanged)
        redraw();
    QQuickItem::itemChange(change, data);
}

void Picture::geometryChange(const QRectF &now, const QRectF &before)
{
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size())
        redraw();
}

} // namespace tidewick
