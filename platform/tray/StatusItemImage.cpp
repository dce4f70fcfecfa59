#include "platform/tray/StatusItemImage.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tidewick
{
namespace
{

constexpr qreal barHeight = 22; // points: the height that hosts give to a status icon
constexpr qreal titleGap = 4;   // points between icon and title

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

/// A badge in the lower right corner with a clear rim around it, so that it stands off the icon.
void drawBadge(QPainter &painter, const QString &text, int side)
{
    const qreal rim = std::max(1.0, side / 22.0);
    QFont font = digitFont(side * 0.55, QFont::Bold);
    const qreal room = side - 2 * rim;
    qreal width = QFontMetricsF(font).horizontalAdvance(text);
    if (width > room) {
        font = digitFont(std::floor(font.pixelSize() * room / width), QFont::Bold);
        width = QFontMetricsF(font).horizontalAdvance(text);
    }
    const qreal height = std::ceil(QFontMetricsF(font).capHeight() + 4 * rim);
    const qreal badgeWidth = std::min<qreal>(side, std::max(height, std::ceil(width) + 4 * rim));
    const QRectF badge(side - badgeWidth, side - height, badgeWidth, height);
    const qreal radius = height / 3;

    painter.setPen(Qt::NoPen);
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(badge.adjusted(-rim, -rim, rim, rim), radius + rim, radius + rim);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setBrush(statusInk);
    painter.drawRoundedRect(badge, radius, radius);

    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(QPointF(badge.center().x() - width / 2, badge.bottom() - 2 * rim), text);
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

QImage badgedStatusImage(const QImage &icon, QSize points, const StatusTitle &title, int side)
{
    QImage image = emptyImage(side, side);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    drawIcon(painter, icon, QSizeF(points) * (side / barHeight), 0, side);
    drawBadge(painter, title.text, side);
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
