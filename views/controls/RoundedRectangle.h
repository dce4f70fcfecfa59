#pragma once

#include "views/controls/Picture.h"

#include <QColor>

namespace tidewick
{

/// A rectangle with round corners and a border within its edges. Unlike that of Qt Quick, it has no
/// seams without OpenGL where it is scaled and translucent.
class RoundedRectangle : public tidewick::Picture
{
    Q_OBJECT
    QML_ELEMENT
    /// In points.
    Q_PROPERTY(qreal radius MEMBER m_radius NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)
    Q_PROPERTY(QColor borderColor MEMBER m_borderColor NOTIFY changed)
    Q_PROPERTY(qreal borderWidth MEMBER m_borderWidth NOTIFY changed)

public:
    explicit RoundedRectangle(QQuickItem *parent = nullptr);

Q_SIGNALS:
    void changed();

protected:
    void draw(QPainter &painter, const QRectF &place, double pixelsPerPoint) const override;
    QList<PicturePiece> pieces(QSize pixels, double pixelsPerPoint) const override;

private:
    qreal m_radius = 0;
    QColor m_color = Qt::transparent;
    QColor m_borderColor = Qt::transparent;
    qreal m_borderWidth = 0;
};

} // namespace tidewick
