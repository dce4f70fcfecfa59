#pragma once

#include <QImage>
#include <QQuickItem>
#include <QtQmlIntegration>

namespace tidewick
{

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
    virtual int overhang(QSize /*pixels*/) const { return 0; }
    /// Draws into `place`, whole device pixels of an otherwise empty picture: the item's own.
    virtual void draw(QPainter &painter, const QRectF &place, double pixelsPerPoint) const = 0;
    /// The picture of an item of that size, with its overhang; the default draws it.
    virtual QImage image(QSize pixels, double pixelsPerPoint) const;
    /// To be called when it is to be drawn again.
    void redraw();

    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *data) override;
    void itemChange(ItemChange change, const ItemChangeData &data) override;
    void geometryChange(const QRectF &now, const QRectF &before) override;

private:
    bool m_isStale = true;
};

} // namespace tidewick
