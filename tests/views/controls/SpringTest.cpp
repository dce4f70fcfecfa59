#include "views/controls/Spring.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace tidewick;

TEST(Spring, startsAtRestAndEndsAtItsTarget)
{
    for (const double damping : {0.7, 0.8, 0.825, 1.0}) {
        EXPECT_DOUBLE_EQ(springPosition(0, 0.3, damping), 0);
        EXPECT_NEAR(springPosition(1e-6, 0.3, damping), 0, 1e-9);
        EXPECT_NEAR(springPosition(3, 0.3, damping), 1, 1e-9);
    }
}

TEST(Spring, isCriticalAtMost)
{
    for (const double damping : {1.05, 1.2, 2.0})
        EXPECT_EQ(springPosition(0.1, 0.3, damping), springPosition(0.1, 0.3, 1));
}

TEST(Spring, isCriticalByDefault)
{
    Spring spring;
    const int usual = spring.duration();
    spring.setProperty("response", 0.5);
    spring.setProperty("dampingFraction", 1);
    EXPECT_EQ(spring.duration(), usual);
}

TEST(Spring, solvesTheEquationOfTheDampedOscillator)
{
    // x'' = w^2 (1 - x) - 2 d w x', by finite differences.
    const double h = 1e-5;
    for (const double damping : {0.7, 0.825, 1.0}) {
        const double w = 2 * std::numbers::pi / 0.35;
        for (int hundredths = 1; hundredths < 50; ++hundredths) {
            const double t = hundredths / 100.0;
            const double before = springPosition(t - h, 0.35, damping);
            const double x = springPosition(t, 0.35, damping);
            const double after = springPosition(t + h, 0.35, damping);
            const double acceleration = (after - 2 * x + before) / (h * h);
            const double velocity = (after - before) / (2 * h);
            EXPECT_NEAR(acceleration, w * w * (1 - x) - 2 * damping * w * velocity, 0.01);
        }
    }
}

TEST(Spring, overshootsOnlyWhereItIsUnderdamped)
{
    double highest = 0;
    for (int thousandths = 0; thousandths < 1000; ++thousandths)
        highest = std::max(highest, springPosition(thousandths / 1000.0, 0.3, 0.7));
    EXPECT_NEAR(highest, 1 + std::exp(-0.7 * std::numbers::pi / std::sqrt(1 - 0.49)), 1e-4);
    for (int thousandths = 0; thousandths < 1000; ++thousandths)
        EXPECT_LE(springPosition(thousandths / 1000.0, 0.3, 1), 1);
}

TEST(Spring, easingFollowsTheClosedForm)
{
    for (const double damping : {0.7, 0.8, 0.825, 1.0}) {
        Spring spring;
        spring.setProperty("response", 0.3);
        spring.setProperty("dampingFraction", damping);
        const QEasingCurve easing = spring.easing();
        const double seconds = spring.duration() / 1000.0;
        for (int percent = 0; percent <= 100; ++percent) {
            const double part = percent / 100.0;
            EXPECT_NEAR(easing.valueForProgress(part), springPosition(part * seconds, 0.3, damping),
                        0.005)
                << damping << " at " << part;
        }
    }
}
