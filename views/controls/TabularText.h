#pragma once

#include "views/controls/Picture.h"

#include <QColor>
#include <QFont>
#include <QString>

#include <memory>

class QTextLayout;

namespace tidewick
{

/// One line of plain text whose digits are all equally wide, in any font, so that nothing moves
/// when a number changes. Qt has font features for that from 6.6 on, for the fonts that have them.
class TabularText : public tidewick::Picture
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString text MEMBER m_text NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)
    Q_PROPERTY(QFont font MEMBER m_font NOTIFY changed)

public:
    explicit TabularText(QQuickItem *parent = nullptr);
    ~TabularText() override;
    Q_DISABLE_COPY_MOVE(TabularText)

Q_SIGNALS:
    void changed();

protected:
    void draw(QPainter &painter, const QRectF &place, double pixelsPerPoint) const override;

private:
    void layOut();

    QString m_text;
    QColor m_color = Qt::white;
    QFont m_font;
    qreal m_indent = 0;
    std::unique_ptr<QTextLayout> m_layout;
};

} // namespace tidewick
