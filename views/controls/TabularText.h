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
/// A text that is too long for the item's width ends with an ellipsis.
class TabularText : public tidewick::Picture
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString text MEMBER m_text NOTIFY changed)
    Q_PROPERTY(QColor color MEMBER m_color NOTIFY changed)
    Q_PROPERTY(QFont font MEMBER m_font NOTIFY changed)
    Q_PROPERTY(bool truncated READ isTruncated NOTIFY truncatedChanged)

public:
    explicit TabularText(QQuickItem *parent = nullptr);
    ~TabularText() override;
    Q_DISABLE_COPY_MOVE(TabularText)

    bool isTruncated() const { return m_isTruncated; }

Q_SIGNALS:
    void changed();
    void truncatedChanged();

protected:
    void draw(QPainter &painter, const QRectF &place, double pixelsPerPoint) const override;
    void geometryChange(const QRectF &now, const QRectF &before) override;

private:
    void layOut();
    void elide();
    std::unique_ptr<QTextLayout> layoutOf(const QString &text) const;

    QString m_text;
    QColor m_color = Qt::white;
    QFont m_font;
    qreal m_indent = 0;
    bool m_isTruncated = false;
    std::unique_ptr<QTextLayout> m_layout;
};

} // namespace tidewick
