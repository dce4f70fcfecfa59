#include "views/card/CardShadow.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <QImage>

#include <algorithm>
#include <cmath>

using namespace tidewick;

class CardShadowAt : public testing::TestWithParam<double>
{
protected:
    int alpha(double x, double y) const
    {
        const double scale = GetParam();
        return image.pixelColor(static_cast<int>(x * scale), static_cast<int>(y * scale)).alpha();
    }

    QImage image = cardShadowImage(GetParam());
    double side = image.width() / GetParam(); // in points
};

TEST_P(CardShadowAt, leavesTheCardItselfFree)
{
    EXPECT_EQ(alpha(side / 2, side / 2), 0);
    EXPECT_EQ(alpha(side / 2, card_shadow::reach + 1), 0);
}

TEST_P(CardShadowAt, liesBelowTheCardAndFadesToNothing)
{
    const double below = side - card_shadow::reach;
    const double above = card_shadow::reach;
    EXPECT_GT(alpha(side / 2, below + 1), alpha(side / 2, above - 1));
    EXPECT_GT(alpha(side / 2, below + 1), 30);
    EXPECT_LT(alpha(side / 2, below + 1), 64) << "a quarter of black at most";
    EXPECT_LE(alpha(side / 2, side - 0.6), 2);
    EXPECT_LE(alpha(0.1, 0.1), 1);
}

TEST_P(CardShadowAt, isAQuarterOfBlackBlurredByEightPointsAndFourPointsLower)
{
    // The blur of a straight edge; its deviation is half the radius.
    const auto darkness = [](double distance) {
        return 255 * 0.25 * std::erfc(distance / (8.0 / 2 * std::sqrt(2.0))) / 2;
    };
    const double bottom = side - card_shadow::reach;
    const double top = card_shadow::reach;
    for (const double distance : {0.5, 2.5, 4.5, 6.5, 8.5}) {
        EXPECT_NEAR(alpha(side / 2, bottom + distance), darkness(distance - 4), 4) << distance;
        EXPECT_NEAR(alpha(side / 2, top - distance), darkness(distance + 4), 4) << distance;
    }
}

TEST_P(CardShadowAt, hasACornerInEachPixel)
{
    const double scale = GetParam();
    ASSERT_EQ(image.width(), 2 * std::ceil(34 * scale) + 1);
    const double reach = std::ceil(12 * scale) / scale;
    // What lies within the card's corners of 14 points; from there, distances are radii.
    const QRectF inner =
        QRectF(0, 0, side, side).adjusted(reach, reach, -reach, -reach).adjusted(14, 14, -14, -14);
    const auto distance = [](const QRectF &rectangle, double x, double y) {
        return std::hypot(std::max({rectangle.left() - x, x - rectangle.right(), 0.0}),
                          std::max({rectangle.top() - y, y - rectangle.bottom(), 0.0})) -
               14;
    };
    for (int row = 0; row < image.height(); ++row) {
        for (int column = 0; column < image.width(); ++column) {
            const double x = (column + 0.5) / scale;
            const double y = (row + 0.5) / scale;
            const double free = std::clamp(distance(inner, x, y) * scale + 0.5, 0.0, 1.0);
            const double fromEdge = distance(inner.translated(0, 4), x, y);
            const double dark = 0.25 * std::erfc(fromEdge / (4 * std::sqrt(2.0))) / 2;
            ASSERT_EQ(image.pixelColor(column, row),
                      QColor(0, 0, 0, int(std::lround(255 * dark * free))))
                << column << ", " << row;
        }
    }
}

TEST_P(CardShadowAt, isTheSameOnTheLeftAndOnTheRight)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width() / 2; ++x)
            ASSERT_EQ(image.pixel(x, y), image.pixel(image.width() - 1 - x, y)) << x << ", " << y;
    }
}

INSTANTIATE_TEST_SUITE_P(Scales, CardShadowAt, testing::Values(1.0, 1.5, 2.0));
