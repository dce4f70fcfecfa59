#include "views/controls/Symbol.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include <cmath>

using namespace tidewick;

namespace
{

/// Large enough that a pixel is less than a hundredth of each symbol's usual size.
constexpr int side = 2000;

QImage pictureOf(const char *name)
{
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    EXPECT_TRUE(
        drawSymbol(painter, QString::fromLatin1(name), image.rect(), Qt::white, QFont::Medium));
    return image;
}

bool isInk(const QImage &image, int x, int y)
{
    return qAlpha(image.pixel(x, y)) > 20;
}

/// The part of the square, from 0 to 1, that the symbol covers.
QRectF inkOf(const QImage &image)
{
    QRect ink;
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            if (isInk(image, x, y))
                ink |= QRect(x, y, 1, 1);
    return {QPointF(ink.topLeft()) / side, QSizeF(ink.size()) / side};
}

} // namespace

struct SymbolRow
{
    const char *name;
    const char *symbol;
    double width; // at least, as a part of the square
    double height;
};

class SymbolShape : public testing::TestWithParam<SymbolRow>
{
};

TEST_P(SymbolShape, fillsItsSquareAroundTheMiddle)
{
    const QRectF ink = inkOf(pictureOf(GetParam().symbol));
    EXPECT_GE(ink.width(), GetParam().width);
    EXPECT_GE(ink.height(), GetParam().height);
    EXPECT_NEAR(ink.center().x(), 0.5, 0.04);
    EXPECT_NEAR(ink.center().y(), 0.5, 0.04);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SymbolShape,
    testing::Values(SymbolRow{"arrowClockwise", "arrow.clockwise", 0.85, 0.85},
                    SymbolRow{"arrowUpForward", "arrow.up.forward", 0.85, 0.85},
                    SymbolRow{"checkmark", "checkmark", 0.8, 0.7},
                    SymbolRow{"chevronDown", "chevron.down", 0.85, 0.45},
                    SymbolRow{"chevronUp", "chevron.up", 0.85, 0.45},
                    SymbolRow{"circleFill", "circle.fill", 0.99, 0.99},
                    SymbolRow{"dotRadiowavesUpForward", "dot.radiowaves.up.forward", 0.9, 0.9},
                    SymbolRow{"folderFill", "folder.fill", 0.9, 0.7},
                    SymbolRow{"moonZzzFill", "moon.zzz.fill", 0.8, 0.8},
                    SymbolRow{"spinner", "spinner", 0.85, 0.85},
                    SymbolRow{"xmark", "xmark", 0.8, 0.8},
                    SymbolRow{"xmarkCircleFill", "xmark.circle.fill", 0.99, 0.99}),
    rowName);

// From the middle the ring is equally far to the left, up and down: it does not wobble.
TEST(SymbolShape, arrowTurnsAboutTheMiddleOfItsRing)
{
    const QImage arrow = pictureOf("arrow.clockwise");
    const auto distance = [&arrow](QPoint step) {
        QPoint place(side / 2, side / 2);
        while (arrow.rect().contains(place) && !isInk(arrow, place.x(), place.y()))
            place += step;
        return (place - QPoint(side / 2, side / 2)).manhattanLength() / double(side);
    };
    const double left = distance({-1, 0});
    EXPECT_NEAR(left, 4.25 / 13, 0.005);
    EXPECT_NEAR(distance({0, -1}), left, 0.005);
    EXPECT_NEAR(distance({0, 1}), left, 0.005);
}

TEST(Symbol, tellsOfAnotherSize)
{
    Symbol symbol;
    int changes = 0;
    QObject::connect(&symbol, &Symbol::sizeChanged, &symbol, [&changes] { ++changes; });
    for (const int size : {20, 20, 30})
        symbol.setProperty("size", size);
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(symbol.implicitWidth(), 30);
    EXPECT_EQ(symbol.implicitHeight(), 30);
}
