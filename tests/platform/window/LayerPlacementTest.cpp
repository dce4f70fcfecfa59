#include "platform/window/LayerPlacement.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

using namespace tidewick;

namespace
{

constexpr QSize size(480, 540);
const ScreenArea first{{0, 0, 1280, 800}, {0, 0, 1280, 800}, 1.5};
const ScreenArea second{{1280, 0, 1920, 1080}, {1280, 0, 1920, 1080}};

constexpr Qt::Edges topLeft = Qt::TopEdge | Qt::LeftEdge;
constexpr Qt::Edges topRight = Qt::TopEdge | Qt::RightEdge;
constexpr Qt::Edges bottomLeft = Qt::BottomEdge | Qt::LeftEdge;
constexpr Qt::Edges bottomRight = Qt::BottomEdge | Qt::RightEdge;

} // namespace

struct LayerRow
{
    const char *name;
    std::optional<QPoint> anchor;
    LayerPlace place;
    QList<ScreenArea> screens{first, second};
};

class LayerPlacement : public testing::TestWithParam<LayerRow>
{
};

TEST_P(LayerPlacement, isAtTheBarThatHoldsTheItem)
{
    EXPECT_EQ(layerPlace(size, GetParam().anchor, GetParam().screens), GetParam().place);
}

// The distances are from the left, the top, the right and the bottom.
INSTANTIATE_TEST_SUITE_P(
    Rows, LayerPlacement,
    testing::Values(
        LayerRow{"belowABarAtTheTop", QPoint(500, 15), {0, topLeft, {260, 6, 0, 0}}},
        LayerRow{"aboveABarAtTheBottom", QPoint(700, 785), {0, bottomRight, {0, 0, 340, 6}}},
        LayerRow{"rightOfABarAtTheLeft", QPoint(15, 390), {0, topLeft, {6, 120, 0, 0}}},
        LayerRow{"leftOfABarAtTheRight", QPoint(1265, 500), {0, bottomRight, {0, 0, 6, 30}}},
        LayerRow{"besideAnItemInAnUpperCorner", QPoint(1270, 15), {0, topRight, {0, 6, 6, 0}}},
        LayerRow{"besideAnItemInALowerCorner", QPoint(3, 790), {0, bottomLeft, {6, 0, 0, 6}}},
        LayerRow{"onTheScreenOfTheItem", QPoint(3000, 1060), {1, bottomRight, {0, 0, 6, 6}}},
        LayerRow{"besideThePointerInAPopupOfALowerBar",
                 QPoint(1100, 500),
                 {0, bottomRight, {0, 0, 202, 6}}},
        LayerRow{
            "besideThePointerInAPopupOfAnUpperBar", QPoint(300, 200), {0, topLeft, {322, 6, 0, 0}}},
        LayerRow{"upperRightOfTheScreenInUseWithoutAnItem",
                 std::nullopt,
                 {std::nullopt, topRight, {0, 6, 6, 0}}},
        LayerRow{"upperRightIfTheScreenOfTheItemIsGone",
                 QPoint(3000, 1060),
                 {std::nullopt, topRight, {0, 6, 6, 0}},
                 {first}}),
    rowName);
