#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QString>
#include <QtQmlIntegration>

namespace tidewick
{

/// Draws the symbol `name` into `place` of an otherwise empty picture; false if it does not exist.
bool drawSymbol(QPainter &painter, const QString &name, const QRectF &place, const QColor &color);

/// One of our own symbols, drawn in `color` and as sharp as the screen allows. A name that does not
/// exist draws nothing.
class Symbol : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name MEMBER m_name NOTIFY nameChanged)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY colorChanged)
    /// Width and height, in points.
    Q_PROPERTY(qreal size READ size WRITE setSize NOTIFY sizeChanged)
    /// Degrees clockwise about the middle. The symbol is drawn turned, because the software scene
    /// graph turns finished pictures pixel by pixel.
    Q_PROPERTY(qreal angle MEMBER m_angle NOTIFY angleChanged)

public:
    explicit Symbol(QQuickItem *parent = nullptr);

    qreal size() const { return implicitWidth(); }
    void setSize(qreal size);
    void paint(QPainter *painter) override;

Q_SIGNALS:
    void nameChanged();
    void colorChanged();
    void sizeChanged();
    void angleChanged();

private:
    QString m_name;
    QColor m_color = Qt::white;
    qreal m_angle = 0;
};

} // namespace tidewick
