#include "platform/tray/StatusItemImage.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

namespace tidewick
{
namespace
{

constexpr qreal barHeight = 22; // points: the height that hosts give to a status icon
constexpr qreal titleGap = 4;   // points between icon and title

/// The part of the icon that is enough to know it by, where there is little room.
constexpr QRectF emblemPart(0.25, 0, 0.5, 0.75);

QImage emptyImage(int width, int height)
{
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

QFont digitFont(qreal pixelSize, QFont::Weight weight)
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(pixelSize))));
    font.setWeight(weight);
    return font;
}

/// Draws the icon with its left edge at `left`, centred between top and bottom of the picture.
void drawIcon(QPainter &painter, const QImage &icon, QSizeF size, qreal left, int height)
{
    const QImage scaled = icon.scaled(size.toSize(), Qt::KeepAspectRatio, Qt::SmoothTransformation);
    painter.drawImage(QPoint(qRound(left), (height - scaled.height()) / 2), scaled);
}

/// The width of what is left free around and between things.
qreal rimOf(int side)
{
    return std::max(1.0, std::round(side / 20.0));
}

QImage emblemOf(const QImage &icon)
{
    const QRectF part(emblemPart.x() * icon.width(), emblemPart.y() * icon.height(),
                      emblemPart.width() * icon.width(), emblemPart.height() * icon.height());
    return icon.copy(part.toRect());
}

/// The number in a badge in the lower right corner of a square.
struct Badge
{
    QFont font;
    QRectF box;
    QPointF baseline; // where the text begins

    Badge(const QString &text, int side);
    void draw(QPainter &painter, const QString &text) const;
};

Badge::Badge(const QString &text, int side) : font(digitFont(side * 0.5, QFont::Bold))
{
    const qreal padding = rimOf(side);
    const qreal room = side - 2 * padding;
    qreal width = QFontMetricsF(font).horizontalAdvance(text);
    if (width > room) {
        font = digitFont(std::floor(font.pixelSize() * room / width), QFont::Bold);
        width = QFontMetricsF(font).horizontalAdvance(text);
    }
    const qreal height = std::ceil(QFontMetricsF(font).capHeight()) + 2 * padding;
    const qreal boxWidth = std::min<qreal>(side, std::max(height, std::ceil(width) + 2 * padding));
    box = QRectF(side - boxWidth, side - height, boxWidth, height);
    baseline = QPointF(box.center().x() - width / 2, box.bottom() - padding);
}

void Badge::draw(QPainter &painter, const QString &text) const
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(statusInk);
    painter.drawRoundedRect(box, box.height() / 4, box.height() / 4);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(baseline, text);
}

/// What of a square begins in the upper left corner and ends above, or beside, the badge.
std::array<QSize, 2> roomsClearOf(const QRectF &badge, int side)
{
    const qreal rim = rimOf(side);
    return {QSizeF(side, badge.top() - rim).toSize(), QSizeF(badge.left() - rim, side).toSize()};
}

/// The size of `picture` in that of the rooms in which it can be larger.
QSize largerFit(QSize picture, const std::array<QSize, 2> &rooms)
{
    const QSize one = picture.scaled(rooms[0], Qt::KeepAspectRatio);
    const QSize other = picture.scaled(rooms[1].expandedTo(QSize(0, 0)), Qt::KeepAspectRatio);
    return one.height() >= other.height() ? one : other;
}

} // namespace

QImage plainStatusImage(const QImage &icon, QSize points, int side)
{
    QImage image = emptyImage(side, side);
    QPainter painter(&image);
    const QSizeF size = QSizeF(points) * (side / barHeight);
    drawIcon(painter, icon, size, (side - size.width()) / 2, side);
    return image;
}

QImage badgedStatusImage(const QImage &icon, QSize /*points*/, const StatusTitle &title, int side)
{
    QImage image = emptyImage(side, side);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const Badge badge(title.text, side);
    const QImage emblem = emblemOf(icon);
    const QSize room = largerFit(emblem.size(), roomsClearOf(badge.box, side));
    const QImage scaled = emblem.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    painter.drawImage(QPoint(0, 0), scaled);
    badge.draw(painter, title.text);
    return image;
}

QImage wideStatusImage(const QImage &icon, QSize points, const StatusTitle &title, int height)
{
    const qreal scale = height / barHeight;
    const QFont font = digitFont(title.pointSize * scale, title.weight);
    const QFontMetricsF metrics(font);
    const QSizeF iconSize = QSizeF(points) * scale;
    const qreal textLeft = iconSize.width() + titleGap * scale;
    QImage image = emptyImage(
        static_cast<int>(std::ceil(textLeft + metrics.horizontalAdvance(title.text))), height);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    drawIcon(painter, icon, iconSize, 0, height);
    painter.setFont(font);
    painter.setPen(statusInk);
    const qreal baseline = (height + metrics.ascent() - metrics.descent()) / 2;
    painter.drawText(QPointF(textLeft, baseline - title.baselineOffset * scale), title.text);
    return image;
}

} // namespace tidewick
