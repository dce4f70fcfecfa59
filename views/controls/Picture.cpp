#include "views/controls/Picture.h"

#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGTexture>

#include <memory>
#include <utility>

namespace tidewick
{
namespace
{

/// One node for each piece. It is a transform that changes nothing: what is added to a plain node
/// later, the software scene graph draws in the corner of the window.
class PictureNode : public QSGTransformNode
{
public:
    void show(QQuickWindow &window, const QList<PicturePiece> &pieces)
    {
        m_places.clear();
        for (const PicturePiece &piece : pieces)
            m_places.append(QRect(piece.place, piece.image.size()));
        while (childCount() > pieces.size()) {
            const std::unique_ptr<QSGNode> last(lastChild());
            removeChildNode(last.get());
        }
        for (int i = 0; i < pieces.size(); ++i) {
            QSGImageNode *const node = i < childCount() ? &nodeAt(i) : newNode(window);
            node->setTexture(window.createTextureFromImage(pieces[i].image));
            node->setSourceRect(QRectF({}, node->texture()->textureSize()));
            // The scene graph must not see it without a texture.
            if (i == childCount())
                appendChildNode(node);
        }
    }

    /// With the first pixel of the picture at `first`.
    void place(QPointF first, double pixelsPerPoint)
    {
        for (int i = 0; i < m_places.size(); ++i)
            nodeAt(i).setRect(QRectF(first + QPointF(m_places[i].topLeft()) / pixelsPerPoint,
                                     QSizeF(m_places[i].size()) / pixelsPerPoint));
    }

private:
    static QSGImageNode *newNode(QQuickWindow &window)
    {
        QSGImageNode *const node = window.createImageNode();
        node->setOwnsTexture(true);
        // This changes only what stands in a scaled item.
        node->setFiltering(QSGTexture::Linear);
        return node;
    }

    QSGImageNode &nodeAt(int index) { return static_cast<QSGImageNode &>(*childAtIndex(index)); }

    QList<QRect> m_places;
};

} // namespace

QList<QRect> sidesOf(QSize picture, int high, int wide)
{
    const int bottom = picture.height() - high;
    const int right = picture.width() - wide;
    if (2 * high >= picture.height() || 2 * wide >= picture.width())
        return {QRect({}, picture)};
    return {QRect(0, 0, picture.width(), high), QRect(0, bottom, picture.width(), high),
            QRect(0, high, wide, bottom - high), QRect(right, high, wide, bottom - high)};
}

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
    const int beyond = overhang(pixels, pixelsPerPoint);
    QImage image(pixels + 2 * QSize(beyond, beyond), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        draw(painter, QRect(QPoint(beyond, beyond), pixels), pixelsPerPoint);
    }
    // An image keeps what painted it, which takes more than most pictures here.
    return image.copy();
}

QList<PicturePiece> Picture::pieces(QSize pixels, double pixelsPerPoint) const
{
    return {{image(pixels, pixelsPerPoint), {}}};
}

QSGNode *Picture::updatePaintNode(QSGNode *old, UpdatePaintNodeData * /*data*/)
{
    const double pixelsPerPoint = window()->effectiveDevicePixelRatio();
    const QSize pixels((size() * pixelsPerPoint).toSize());
    // Qt Quick asks this of hidden items too.
    if (pixels.isEmpty() || !isVisible()) {
        delete old;
        return nullptr;
    }
    auto *node = static_cast<PictureNode *>(old);
    if (node == nullptr) {
        node = new PictureNode;
        m_isStale = true;
    }
    if (std::exchange(m_isStale, false))
        node->show(*window(), pieces(pixels, pixelsPerPoint));
    // Both edges are rounded to the same side, also halfway between two pixels.
    constexpr double nudge = 1.0 / 64;
    const int beyond = overhang(pixels, pixelsPerPoint);
    const QSizeF picture = QSizeF(pixels + 2 * QSize(beyond, beyond)) / pixelsPerPoint;
    node->place(boundingRect().center() - QPointF(picture.width(), picture.height()) / 2 -
                    QPointF(nudge, nudge) / pixelsPerPoint,
                pixelsPerPoint);
    return node;
}

void Picture::itemChange(ItemChange change, const ItemChangeData &data)
{
    if (change == ItemDevicePixelRatioHasChanged || change == ItemVisibleHasChanged)
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
