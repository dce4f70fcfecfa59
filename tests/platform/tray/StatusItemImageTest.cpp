#include "platform/tray/StatusItemImage.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

using namespace tidewick;

namespace
{

constexpr QSize points(18, 18);
constexpr std::array<int, 6> sides{16, 22, 24, 32, 48, 64};

/// An icon that is red all over.
QImage redIcon()
{
    QImage image(144, 144, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::red);
    return image;
}

/// An icon whose emblem alone is red.
QImage emblemIcon()
{
    QImage icon = redIcon();
    icon.fill(Qt::yellow);
    QPainter painter(&icon);
    painter.fillRect(36, 0, 72, 108, Qt::red);
    return icon;
}

StatusTitle title(const char *text)
{
    return {QString::fromUtf8(text)};
}

/// The smallest rectangle that holds every pixel that `matches`.
template <class Matches>
QRect extent(const QImage &image, Matches matches)
{
    QRect found;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (matches(image.pixelColor(x, y)))
                found |= QRect(x, y, 1, 1);
        }
    }
    return found;
}

bool isVisible(const QColor &color)
{
    return color.alpha() > 128;
}

bool isRed(const QColor &color)
{
    return isVisible(color) && color.red() > 200 && color.green() < 50;
}

bool isYellow(const QColor &color)
{
    return isVisible(color) && color.red() > 200 && color.green() > 150 && color.blue() < 100;
}

bool isInk(const QColor &color)
{
    return isVisible(color) && std::abs(color.red() - statusInk.red()) < 30 &&
           std::abs(color.green() - statusInk.green()) < 30;
}

bool isWhite(const QColor &color)
{
    return isVisible(color) && color.red() > 200 && color.green() > 200 && color.blue() > 200;
}

/// Contrast as WCAG 2.1 defines it, from 1 to 21.
double contrast(const QColor &a, const QColor &b)
{
    const auto luminance = [](const QColor &color) {
        const auto linear = [](double value) {
            return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
               0.0722 * linear(color.blueF());
    };
    const auto [low, high] = std::minmax({luminance(a), luminance(b)});
    return (high + 0.05) / (low + 0.05);
}

} // namespace

TEST(StatusItemImage, plainIconFillsEighteenOfTwentyTwoPointsInTheMiddle)
{
    EXPECT_EQ(extent(plainStatusImage(redIcon(), points, 22), isVisible), QRect(2, 2, 18, 18));
    EXPECT_EQ(extent(plainStatusImage(redIcon(), points, 44), isVisible), QRect(4, 4, 36, 36));
}

TEST(StatusItemImage, badgeStaysInsideTheSquareAtEverySizeAndNumber)
{
    for (const int side : sides) {
        for (const char *text : {"1", "9", "12", "88", "137", "65535"}) {
            const QImage image = badgedStatusImage(redIcon(), points, title(text), side);
            EXPECT_EQ(image.size(), QSize(side, side));
            const QRect digits = extent(image, isWhite);
            EXPECT_TRUE(image.rect().adjusted(1, 1, -1, -1).contains(digits))
                << text << " at " << side;
            const QRect box = extent(image, isInk);
            EXPECT_EQ(box.bottomRight(), image.rect().bottomRight()) << text << " at " << side;
            EXPECT_TRUE(box.contains(digits)) << text << " at " << side;
            const int left = digits.left() - box.left();
            const int right = box.right() - digits.right();
            EXPECT_LE(std::abs(left - right), 1 + side / 16) << text << " at " << side;
        }
    }
}

TEST(StatusItemImage, badgeIsLegibleBesideTheWholeEmblem)
{
    for (const int side : sides) {
        for (const char *text : {"3", "12", "137"}) {
            const QImage image = badgedStatusImage(emblemIcon(), points, title(text), side);
            const QRect digits = extent(image, isWhite);
            const QRect emblem = extent(image, isRed);
            EXPECT_GE(digits.height(), side * (qstrlen(text) < 3 ? 3 : 2) / 10)
                << text << " at " << side;
            EXPECT_GE(emblem.height(), side * 4 / 10) << text << " at " << side;
            EXPECT_NEAR(emblem.width() * 3, emblem.height() * 2, 3) << text << " at " << side;
            EXPECT_FALSE(emblem.intersects(digits)) << text << " at " << side;
            EXPECT_EQ(extent(image, isYellow).isEmpty(), qstrlen(text) > 1)
                << text << " at " << side;
        }
    }
}

TEST(StatusItemImage, iconKeepsItsSizeAndHeightBesideASingleDigit)
{
    for (const int side : sides) {
        const QImage image = badgedStatusImage(emblemIcon(), points, title("3"), side);
        const QImage plain = plainStatusImage(emblemIcon(), points, side);
        const QRect emblem = extent(image, isRed);
        const QRect plainEmblem = extent(plain, isRed);
        EXPECT_EQ(emblem.size(), plainEmblem.size()) << side;
        EXPECT_EQ(emblem.top(), plainEmblem.top()) << side;
        EXPECT_EQ(extent(image, isYellow).bottom(), extent(plain, isYellow).bottom()) << side;
        // Above two digits it is smaller, and about as far from the left.
        const QRect above =
            extent(badgedStatusImage(emblemIcon(), points, title("12"), side), isRed);
        EXPECT_NEAR(above.center().x(), emblem.center().x(), 1) << side;
    }
}

TEST(StatusTitle, isOfFourteenPointsAndRaisedByOne)
{
    const StatusTitle shown = title("8");
    EXPECT_EQ(shown.pointSize, 14);
    EXPECT_EQ(shown.weight, QFont::Medium);
    EXPECT_EQ(shown.baselineOffset, 1);
}

TEST(StatusItemImage, badgesRimIsATwentiethOfTheSide)
{
    const QList<QPair<int, int>> rims{{22, 1}, {29, 1}, {30, 2}, {49, 2}, {50, 3}};
    for (const auto &[side, rim] : rims) {
        QFont font = QGuiApplication::font();
        font.setPixelSize(qRound(side * 0.5));
        font.setWeight(QFont::Bold);
        const QImage image = badgedStatusImage(redIcon(), points, title("3"), side);
        const int height = qRound(std::ceil(QFontMetricsF(font).capHeight())) + 2 * rim;
        EXPECT_EQ(extent(image, isInk).height(), height) << side;
    }
}

TEST(StatusItemImage, badgeHasRoundCorners)
{
    const QImage image = badgedStatusImage(redIcon(), points, title("3"), 64);
    const QRect box = extent(image, isInk);
    const int radius = box.height() / 4;
    EXPECT_EQ(image.pixelColor(box.bottomRight()).alpha(), 0);
    EXPECT_TRUE(isInk(image.pixelColor(box.bottomRight() - QPoint(radius, 0))));
    EXPECT_TRUE(isInk(image.pixelColor(box.bottomRight() - QPoint(0, radius))));
    const QRect corner(box.bottomRight() - QPoint(radius, radius), box.bottomRight());
    const QRect smooth = extent(image.copy(corner), [](const QColor &color) {
        return color.alpha() > 10 && color.alpha() < 245;
    });
    EXPECT_FALSE(smooth.isEmpty()) << "it has steps";
}

TEST(StatusItemImage, nothingOfTheIconIsAboveTheBadge)
{
    for (const int side : sides) {
        const QImage image = badgedStatusImage(emblemIcon(), points, title("3"), side);
        ASSERT_FALSE(extent(image, isYellow).isEmpty()) << side;
        EXPECT_LT(extent(image, isYellow).right(), extent(image, isInk).left()) << side;
    }
}

TEST(StatusItemImage, badgesOfDifferentNumbersDiffer)
{
    EXPECT_NE(badgedStatusImage(redIcon(), points, title("3"), 22),
              badgedStatusImage(redIcon(), points, title("2"), 22));
}

TEST(StatusItemImage, wideImageHasIconThenTitleSideBySide)
{
    for (const int side : sides) {
        const QImage image = wideStatusImage(redIcon(), points, title("12"), side);
        EXPECT_EQ(image.height(), side);
        const QRect icon = extent(image, isRed);
        const QRect text =
            extent(image, [](const QColor &color) { return isVisible(color) && !isRed(color); });
        EXPECT_EQ(icon, extent(plainStatusImage(redIcon(), points, side), isRed));
        EXPECT_GT(text.left(), icon.right());
        EXPECT_GE(text.height(), side * 4 / 10);
    }
}

TEST(StatusItemImage, titleStandsBesideTheMiddleOfTheIcon)
{
    constexpr int side = 66; // three pixels a point
    const StatusTitle shown = title("8");
    const QImage image = wideStatusImage(redIcon(), points, shown, side);
    const QRect icon = extent(image, isRed);
    const QRect text =
        extent(image, [](const QColor &color) { return isVisible(color) && !isRed(color); });
    EXPECT_NEAR(text.center().y(), icon.center().y(), 4);
    QFont font = QGuiApplication::font();
    font.setPixelSize(static_cast<int>(std::lround(3 * shown.pointSize)));
    font.setWeight(shown.weight);
    const qreal bearing = QFontMetricsF(font).leftBearing(QLatin1Char('8'));
    EXPECT_NEAR(text.left() - icon.right() - 1, 4 * 3 + bearing, 1.5);
}

TEST(StatusItemImage, wideImageGrowsWithItsTitle)
{
    EXPECT_GT(wideStatusImage(redIcon(), points, title("123"), 22).width(),
              wideStatusImage(redIcon(), points, title("1"), 22).width());
}

TEST(StatusItemImage, titleIsLegibleOnLightAndDarkBars)
{
    const QImage image = wideStatusImage(redIcon(), points, title("8"), 64);
    QColor ink;
    extent(image, [&ink](const QColor &color) {
        if (color.alpha() == 255 && !isRed(color))
            ink = color;
        return false;
    });
    EXPECT_GE(contrast(ink, Qt::white), 3);
    EXPECT_GE(contrast(ink, QColor(0x1e, 0x1e, 0x1e)), 3);
    EXPECT_GE(contrast(ink, Qt::black), 3);
}
