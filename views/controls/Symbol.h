#pragma once

#include "views/controls/Picture.h"

#include <QColor>
#include <QFont>
#include <QString>

namespace tidewick
{

/// Draws the symbol `name` into `place` of an otherwise empty picture; false if it does not exist.
/// Its lines are as strong as those of a text of `weight`.
bool drawSymbol(QPainter &painter, const QString &name, const QRectF &place, const QColor &color,
                int weight = QFont::Normal);

/// One of our own symbols, drawn in `color`. A name that does not exist draws nothing.
class Symbol : public tidewick::Picture
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name MEMBER m_name NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)
    Q_PROPERTY(int weight MEMBER m_weight NOTIFY changed)
    /// Width and height, in points. An item that is larger has the symbol in its middle.
    Q_PROPERTY(qreal size READ size WRITE setSize NOTIFY sizeChanged)
    /// Degrees clockwise about the middle. The symbol is drawn turned, because the software scene
    /// graph turns finished pictures pixel by pixel. Its corners then reach beyond the item.
    Q_PROPERTY(qreal angle MEMBER m_angle NOTIFY changed)

public:
    explicit Symbol(QQuickItem *parent = nullptr);

    qreal size() const { return implicitWidth(); }
    void setSize(qreal size);

Q_SIGNALS:
    void changed();
    void sizeChanged();

protected:
    int overhang(QSize pixels, double pixelsPerPoint) const override;
    void draw(QPainter &painter, const QRectF &place, double pixelsPerPoint) const override;

private:
    QString m_name;
    QColor m_color = Qt::white;
    int m_weight = QFont::Normal;
    qreal m_angle = 0;
};

} // namespace tidewick
