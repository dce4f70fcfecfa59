#include "views/card/Ring.h"

#include <gtest/gtest.h>

#include <QImage>

#include <algorithm>
#include <cmath>

using namespace tidewick;

namespace
{

class DrawnRing : public Ring
{
public:
    using Ring::image;
};

/// What `ring` covers of the pixel whose middle is at (`x`, `y`) from its own, in pixels.
double coverage(const Ring &ring, double pixelsPerPoint, double x, double y)
{
    const double radius = ring.diameter() / 2 * pixelsPerPoint;
    const double width = ring.lineWidth() * pixelsPerPoint;
    return std::clamp(width / 2 + 0.5 - std::abs(std::hypot(x, y) - radius), 0.0, 1.0);
}

class RingIn : public testing::TestWithParam<int>
{
};

} // namespace

// Also in a picture that is smaller than the ring.
TEST_P(RingIn, isASmoothCircleInTheMiddle)
{
    const QSize size(GetParam(), GetParam() + 1);
    DrawnRing ring;
    ring.setProperty("color", QColor(0, 255, 0));
    const QImage image = ring.image(size, 1);
    ASSERT_EQ(image.size(), size);
    for (int row = 0; row < size.height(); ++row) {
        for (int column = 0; column < size.width(); ++column) {
            const double x = column + 0.5 - size.width() / 2.0;
            const double y = row + 0.5 - size.height() / 2.0;
            const double wanted = 255 * ring.strength() * coverage(ring, 1, x, y);
            EXPECT_NEAR(qAlpha(image.pixel(column, row)), wanted, 0.6) << column << ", " << row;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Pixels, RingIn, testing::Values(40, 50, 51, 53, 60));

TEST(Ring, isDrawnOnceForAllThatLookAlike)
{
    DrawnRing first;
    DrawnRing second;
    EXPECT_EQ(first.image({53, 53}, 1).cacheKey(), second.image({53, 53}, 1).cacheKey());
}

TEST(Ring, followsItsPulseAndNoOther)
{
    Pulse before;
    Pulse now;
    Ring ring;
    int pulses = 0;
    int changes = 0;
    QObject::connect(&ring, &Ring::pulseChanged, &ring, [&pulses] { ++pulses; });
    QObject::connect(&ring, &Ring::changed, &ring, [&changes] { ++changes; });
    ring.setPulse(&before);
    ring.setPulse(&now);
    ring.setPulse(&now);
    EXPECT_EQ(pulses, 2);
    EXPECT_EQ(changes, 2);
    Q_EMIT before.valueChanged();
    EXPECT_EQ(changes, 2);
    Q_EMIT now.valueChanged();
    EXPECT_EQ(changes, 3);
}
