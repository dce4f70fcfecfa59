#include "views/card/CardShadow.h"
#include "views/controls/RoundedRectangle.h"

#include <gtest/gtest.h>

#include <QPainter>

using namespace tidewick;

namespace
{

template <class Item>
class Drawn : public Item
{
public:
    using Item::image;
    using Item::overhang;
    using Item::pieces;
};

QImage joined(const QList<PicturePiece> &pieces, QSize size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    for (const PicturePiece &piece : pieces)
        painter.drawImage(piece.place, piece.image);
    return image;
}

qint64 pixelsOf(const QList<PicturePiece> &pieces)
{
    qint64 pixels = 0;
    for (const PicturePiece &piece : pieces)
        pixels += qint64(piece.image.width()) * piece.image.height();
    return pixels;
}

} // namespace

TEST(SidesOf, surroundTheMiddleWithoutOverlap)
{
    const QList<QRect> wanted{{0, 0, 100, 9}, {0, 41, 100, 9}, {0, 9, 3, 32}, {97, 9, 3, 32}};
    EXPECT_EQ(sidesOf({100, 50}, 9, 3), wanted);
}

TEST(SidesOf, isTheWholeWhereThereIsNoMiddle)
{
    const QList<QRect> whole{{0, 0, 100, 50}};
    EXPECT_EQ(sidesOf({100, 50}, 25, 3), whole);
    EXPECT_EQ(sidesOf({100, 50}, 9, 50), whole);
    EXPECT_EQ(sidesOf({100, 50}, 24, 49).size(), 4);
}

class PictureAt : public testing::TestWithParam<double>
{
};

TEST_P(PictureAt, piecesOfAFrameShowAllOfIt)
{
    for (const double radius : {0.0, 6.0, 12.0, 14.0}) {
        for (const double border : {1.0, 2.0}) {
            Drawn<RoundedRectangle> frame;
            frame.setProperty("radius", radius);
            frame.setProperty("borderColor", QColor(Qt::white));
            frame.setProperty("borderWidth", border);
            const QSize size(200, 150);
            const auto pieces = frame.pieces(size, GetParam());
            EXPECT_EQ(joined(pieces, size), frame.image(size, GetParam())) << radius << border;
            EXPECT_LT(pixelsOf(pieces), size.width() * size.height() / 2) << radius << border;
        }
    }
}

TEST_P(PictureAt, filledRectangleIsOnePiece)
{
    Drawn<RoundedRectangle> filled;
    filled.setProperty("color", QColor(Qt::white));
    const auto pieces = filled.pieces({200, 150}, GetParam());
    ASSERT_EQ(pieces.size(), 1);
    EXPECT_EQ(pieces[0].image, filled.image({200, 150}, GetParam()));
    EXPECT_EQ(pieces[0].image.pixelColor(0, 0), Qt::white) << "it has square corners by default";
}

TEST_P(PictureAt, borderWithoutAWidthIsNone)
{
    Drawn<RoundedRectangle> filled;
    filled.setProperty("color", QColor(Qt::white));
    filled.setProperty("borderColor", QColor(Qt::red));
    filled.setProperty("borderWidth", 0);
    EXPECT_EQ(filled.image({200, 150}, GetParam()).pixelColor(100, 0), Qt::white);
}

TEST_P(PictureAt, piecesOfAShadowShowAllOfIt)
{
    const Drawn<CardShadow> shadow;
    const QImage whole = cardShadowImage(GetParam());
    const int beyond = shadow.overhang({}, GetParam());
    const QSize card = whole.size() - 2 * QSize(beyond, beyond);
    EXPECT_EQ(joined(shadow.pieces(card, GetParam()), whole.size()), whole);
}

TEST_P(PictureAt, shadowOfALargerCardRepeatsItsMiddle)
{
    const Drawn<CardShadow> shadow;
    const QImage whole = cardShadowImage(GetParam());
    const int beyond = shadow.overhang({}, GetParam());
    const QSize more(300, 40);
    const QSize card = whole.size() - 2 * QSize(beyond, beyond) + more;
    const QImage larger = joined(shadow.pieces(card, GetParam()), whole.size() + more);
    const int middle = whole.width() / 2;
    const QPoint far(more.width(), more.height());
    for (int i = 0; i < middle; ++i) {
        EXPECT_EQ(larger.pixel(i, i), whole.pixel(i, i));
        EXPECT_EQ(larger.pixel(middle + 150, i), whole.pixel(middle, i));
        EXPECT_EQ(larger.pixel(i, middle + 20), whole.pixel(i, middle));
        const QPoint last(whole.width() - 1 - i, whole.height() - 1 - i);
        EXPECT_EQ(larger.pixel(last + far), whole.pixel(last));
    }
}

INSTANTIATE_TEST_SUITE_P(Scales, PictureAt, testing::Values(1.0, 1.25, 1.5, 2.0));
