#include "views/card/Ring.h"

#include <algorithm>
#include <cmath>

namespace tidewick
{
namespace
{

struct Circle
{
    double radius = 0; // to the middle of the line
    double lineWidth = 0;

    bool operator==(const Circle &) const = default;
};

/// How much of a pixel at this distance from the middle is line, from 0 to 1.
double coverage(const Circle &circle, double distance)
{
    const double fromLine = std::abs(distance - circle.radius);
    return std::clamp(circle.lineWidth / 2 + 0.5 - fromLine, 0.0, std::min(1.0, circle.lineWidth));
}

/// Half of the chord at the height `y` of a circle of this radius.
double halfChord(double radius, double y)
{
    return std::sqrt(std::max(0.0, radius * radius - y * y));
}

/// The circle in the middle of a picture. QPainter would hand so many short lines to another thread
/// and wait for it. The quarters mirror each other, and nothing but the line is looked at.
QImage imageOf(const Circle &circle, QSize size, QColor color)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const int right = size.width() - 1;
    const int bottom = size.height() - 1;
    const double outside = circle.radius + circle.lineWidth / 2 + 0.5;
    const double inside = std::max(0.0, circle.radius - circle.lineWidth / 2 - 0.5);
    const int red = color.red();
    const int green = color.green();
    const int blue = color.blue();
    const double opacity = 255 * color.alphaF();
    for (int row = 0; row <= bottom / 2; ++row) {
        const double y = size.height() / 2.0 - row - 0.5;
        if (y >= outside)
            continue;
        auto *const above = reinterpret_cast<QRgb *>(image.scanLine(row));
        auto *const below = reinterpret_cast<QRgb *>(image.scanLine(bottom - row));
        const int first = std::max(0, static_cast<int>(size.width() / 2.0 - halfChord(outside, y)));
        const int last =
            std::min(right / 2, static_cast<int>(size.width() / 2.0 - halfChord(inside, y)));
        for (int column = first; column <= last; ++column) {
            const double x = size.width() / 2.0 - column - 0.5;
            const double alpha = opacity * coverage(circle, std::sqrt(x * x + y * y));
            const QRgb pixel = qPremultiply(qRgba(red, green, blue, qRound(alpha)));
            above[column] = above[right - column] = pixel;
            below[column] = below[right - column] = pixel;
        }
    }
    return image;
}

} // namespace

Ring::Ring(QQuickItem *parent) : Picture(parent)
{
    connect(this, &Ring::changed, this, &Ring::redraw);
}

void Ring::setPulse(Pulse *pulse)
{
    if (pulse == m_pulse)
        return;
    if (m_pulse)
        disconnect(m_pulse, nullptr, this, nullptr);
    m_pulse = pulse;
    if (m_pulse)
        connect(m_pulse, &Pulse::valueChanged, this, &Ring::changed);
    Q_EMIT pulseChanged();
    Q_EMIT changed();
}

QImage Ring::image(QSize pixels, double pixelsPerPoint) const
{
    struct Drawn
    {
        bool operator==(const Drawn &) const = default;

        Circle circle;
        QSize size;
        QColor color;
    };
    static Drawn last;
    static QImage lastImage;
    QColor faded = m_color;
    faded.setAlphaF(static_cast<float>(faded.alphaF() * strength()));
    const Circle circle{diameter() / 2 * pixelsPerPoint, lineWidth() * pixelsPerPoint};
    const Drawn wanted{circle, pixels, faded};
    if (!(last == wanted)) {
        lastImage = imageOf(circle, pixels, faded);
        last = wanted;
    }
    return lastImage;
}

} // namespace tidewick
