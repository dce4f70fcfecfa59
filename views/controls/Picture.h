#pragma once

#include <QImage>
#include <QList>
#include <QQuickItem>
#include <QtQmlIntegration>

namespace tidewick
{

/// A part of a picture, and the place of its first pixel there.
struct PicturePiece
{
    QImage image;
    QPoint place;
};

/// The sides of a picture of this size as rectangles that do not overlap: two that are as wide as
/// it is and `high`, and between them two that are `wide`.
QList<QRect> sidesOf(QSize picture, int high, int wide);

/// An item that is drawn in device pixels, sharp at any scale: a pixel of its picture is a pixel of
/// the screen, wherever the item stands. What inherits it writes its name with the namespace: that
/// is how Qt 6.4 finds it for QML.
class Picture : public QQuickItem
{
    Q_OBJECT
    QML_ANONYMOUS

public:
    explicit Picture(QQuickItem *parent = nullptr);

protected:
    /// How many pixels the picture reaches beyond each edge of the item, which has `pixels`.
    virtual int overhang(QSize /*pixels*/, double /*pixelsPerPoint*/) const { return 0; }
    /// Draws into `place`, whole device pixels of an otherwise empty picture: the item's own.
    virtual void draw(QPainter & /*painter*/, const QRectF & /*place*/,
                      double /*pixelsPerPoint*/) const
    {
    }
    /// The picture of an item of that size, with its overhang; by default what draw() draws.
    virtual QImage image(QSize pixels, double pixelsPerPoint) const;
    /// The same without what is empty there; by default all of it. What moves behind an empty place
    /// is drawn sooner if nothing lies over it.
    virtual QList<PicturePiece> pieces(QSize pixels, double pixelsPerPoint) const;
    /// To be called when it is to be drawn again.
    void redraw();

    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *data) override;
    void itemChange(ItemChange change, const ItemChangeData &data) override;
    void geometryChange(const QRectF &now, const QRectF &before) override;

private:
    bool m_isStale = true;
};

} // namespace tidewick
