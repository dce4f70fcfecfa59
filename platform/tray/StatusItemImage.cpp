#include "platform/tray/StatusItemImage.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <optional>

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

/// Where the left edge of the icon is if its emblem stands beside the badge; nothing if there is
/// not enough room for all of the emblem.
std::optional<int> leftBeside(const Badge &badge, QSize icon, int side)
{
    const qreal highest = badge.box.left() - emblemPart.right() * icon.width();
    const qreal lowest = -emblemPart.left() * icon.width();
    const qreal left = std::max(std::floor(highest - rimOf(side)), std::ceil(lowest));
    return left <= highest ? std::optional(static_cast<int>(left)) : std::nullopt;
}

QSize iconPixels(QSize points, int side)
{
    return (QSizeF(points) * (side / barHeight)).toSize();
}

/// The icon at `left`, at the height that it has without a number. What the badge would touch is
/// left out.
void drawBeside(QPainter &painter, const QImage &icon, QSize size, int left, const Badge &badge,
                int side)
{
    drawIcon(painter, icon, size, left, side);
    const qreal emblemEnd = left + emblemPart.right() * size.width();
    const int free =
        static_cast<int>(std::ceil(std::max(emblemEnd, badge.box.left() - rimOf(side))));
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.fillRect(free, 0, side - free, side, Qt::transparent);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
}

/// The emblem above the badge, about as far from the left edge as beside a single digit.
void drawAbove(QPainter &painter, const QImage &icon, QSize size, const Badge &badge, int side)
{
    const int room = static_cast<int>(badge.box.top() - rimOf(side));
    const QImage emblem = emblemOf(icon).scaledToHeight(room, Qt::SmoothTransformation);
    const int left = leftBeside(Badge(QStringLiteral("0"), side), size, side).value_or(0);
    painter.drawImage(QPoint(left + (size.width() - emblem.width()) / 2, 0), emblem);
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
    const Badge badge(title.text, side);
    const QSize size = iconPixels(points, side);
    if (const auto left = leftBeside(badge, size, side))
        drawBeside(painter, icon, size, *left, badge, side);
    else
        drawAbove(painter, icon, size, badge, side);
    badge.draw(painter, title.text);
    return image;
}

QImage wideStatusImage(const QImage &icon, QSize points, const StatusTitle &title, int height)
{
    const qreal scale = height / barHeight;
    const QFont font = digitFont(title.pointSize * scale, title.weight);
    const QFontMetricsF metrics(font);
    const QSizeF iconSize = QSizeF(points) * scale;
    const qreal iconLeft = (height - iconSize.width()) / 2; // where it stands without a title
    const qreal textLeft = iconLeft + iconSize.width() + titleGap * scale;
    QImage image = emptyImage(
        static_cast<int>(std::ceil(textLeft + metrics.horizontalAdvance(title.text))), height);
    QPainter painter(&image);
    drawIcon(painter, icon, iconSize, iconLeft, height);
    painter.setFont(font);
    painter.setPen(statusInk);
    const qreal baseline = (height + metrics.ascent() - metrics.descent()) / 2;
    painter.drawText(QPointF(textLeft, baseline - title.baselineOffset * scale), title.text);
    return image;
}

} // namespace tidewick
