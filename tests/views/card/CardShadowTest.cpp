#include "views/card/CardShadow.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <QImage>

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

TEST_P(CardShadowAt, isTheSameOnTheLeftAndOnTheRight)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width() / 2; ++x)
            ASSERT_EQ(image.pixel(x, y), image.pixel(image.width() - 1 - x, y)) << x << ", " << y;
    }
}

INSTANTIATE_TEST_SUITE_P(Scales, CardShadowAt, testing::Values(1.0, 1.5, 2.0));
