#include "platform/window/PopoverPlacement.h"
#include "tests/support/TestText.h"

#include <gtest/gtest.h>

#include <limits>

using namespace tidewick;

namespace
{

constexpr QSize size(480, 540);
constexpr int least = std::numeric_limits<int>::min();
constexpr int greatest = std::numeric_limits<int>::max();
constexpr QRect full(0, 0, 1280, 800);
const ScreenArea barAtTop{full, {0, 30, 1280, 770}};
const ScreenArea barAtBottom{full, {0, 0, 1280, 770}};
const ScreenArea barAtLeft{full, {30, 0, 1250, 800}};
const ScreenArea barAtRight{full, {0, 0, 1250, 800}};
const ScreenArea noBar{full, full};
const ScreenArea barAtBottomAt150{full, {0, 0, 1280, 756}, 1.5};
const ScreenArea barAtTopAt200{full, {0, 30, 1280, 770}, 2};
/// To the right of a screen of 1920x1200 pixels at 1.5.
const ScreenArea secondAt200{{1920, 0, 960, 540}, {1920, 0, 960, 500}, 2};
const ScreenArea second{{1280, 0, 1920, 1080}, {1280, 0, 1920, 1040}};

} // namespace

struct PlaceRow
{
    const char *name;
    QList<ScreenArea> screens;
    std::optional<QPoint> anchor;
    QPoint place;
};

class PopoverPosition : public testing::TestWithParam<PlaceRow>
{
};

TEST_P(PopoverPosition, isBesideTheItem)
{
    EXPECT_EQ(popoverPosition(size, GetParam().anchor, GetParam().screens), GetParam().place);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, PopoverPosition,
    testing::Values(
        PlaceRow{"belowABarAtTheTop", {barAtTop}, QPoint(640, 15), {400, 36}},
        PlaceRow{"aboveABarAtTheBottom", {barAtBottom}, QPoint(640, 785), {400, 224}},
        PlaceRow{"rightOfABarAtTheLeft", {barAtLeft}, QPoint(15, 400), {36, 130}},
        PlaceRow{"leftOfABarAtTheRight", {barAtRight}, QPoint(1265, 400), {764, 130}},
        PlaceRow{"withinTheScreenInAnUpperCorner", {barAtTop}, QPoint(1270, 15), {794, 36}},
        PlaceRow{"withinTheScreenInALowerCorner", {barAtBottom}, QPoint(3, 790), {6, 224}},
        PlaceRow{"withinTheScreenAtTheEndOfABarAtTheLeft", {barAtLeft}, QPoint(15, 790), {36, 254}},
        PlaceRow{"clearOfAnItemOnABarThatTakesNoRoom", {noBar}, QPoint(640, 15), {400, 37}},
        PlaceRow{"clearOfAnItemOnALowerBarThatTakesNoRoom", {noBar}, QPoint(640, 785), {400, 224}},
        PlaceRow{"clearOfAnItemOnALeftBarThatTakesNoRoom", {noBar}, QPoint(15, 400), {37, 130}},
        PlaceRow{"clearOfAnItemOnARightBarThatTakesNoRoom", {noBar}, QPoint(1265, 400), {764, 130}},
        PlaceRow{"cornerOfABarThatTakesNoRoomIsHorizontal", {noBar}, QPoint(1270, 15), {794, 37}},
        PlaceRow{"asHighAsTheRoomAboveALowerBar",
                 {{{0, 0, 1280, 576}, {0, 0, 1280, 546}}},
                 QPoint(640, 560),
                 {400, 0}},
        PlaceRow{"asWideAsTheRoomBesideARightBar",
                 {{{0, 0, 516, 800}, {0, 0, 486, 800}}},
                 QPoint(500, 400),
                 {0, 130}},
        PlaceRow{"onTheScreenOfTheItem", {barAtTop, second}, QPoint(2000, 1060), {1760, 494}},
        PlaceRow{"atTheBarBesideThePointerInAPopupOfALowerBar",
                 {barAtBottom},
                 QPoint(1100, 500),
                 {598, 224}},
        PlaceRow{"atTheBarBesideThePointerInAPopupOfAnUpperBar",
                 {barAtTop},
                 QPoint(300, 200),
                 {322, 36}},
        PlaceRow{"atTheBarBesideThePointerInAPopupOfALeftBar",
                 {{{0, 0, 1280, 1400}, {30, 0, 1250, 1400}}},
                 QPoint(200, 700),
                 {36, 138}},
        PlaceRow{"atTheBarAboveAPopupThatItClears", {barAtBottom}, QPoint(900, 100), {660, 224}},
        PlaceRow{"besideThePointerInTheMiddleWithoutABar", {noBar}, QPoint(640, 350), {138, 260}},
        PlaceRow{"upperRightWithoutAnItem", {barAtTop, second}, std::nullopt, {794, 36}},
        PlaceRow{"upperRightWithoutABar", {noBar}, std::nullopt, {794, 6}},
        PlaceRow{"lowerRightWithoutAnItemOnALowerBar", {barAtBottom}, std::nullopt, {794, 224}},
        PlaceRow{"lowerLeftWithoutAnItemOnALeftBar", {barAtLeft}, std::nullopt, {36, 254}},
        PlaceRow{"lowerRightWithoutAnItemOnARightBar", {barAtRight}, std::nullopt, {764, 254}},
        PlaceRow{
            "atTheEndIfTheScreenOfTheItemIsGone", {barAtBottom}, QPoint(2000, 1060), {794, 224}},
        PlaceRow{"clearOfTheUpperSideAtTheBeginningOfABarAtTheRight",
                 {barAtRight},
                 QPoint(1265, 3),
                 {764, 6}},
        PlaceRow{"againstTheSideOfAScreenThatHasNoRoomForTheGap",
                 {{{0, 0, 482, 800}, {0, 30, 482, 770}}},
                 QPoint(400, 15),
                 {2, 36}},
        PlaceRow{"atTheBeginningOfAScreenThatIsTooSmall",
                 {{{0, 0, 400, 300}, {0, 20, 400, 280}}},
                 QPoint(200, 10),
                 {0, 20}},
        PlaceRow{"afterThePointerWhereItJustFits",
                 {{{0, 0, 902, 800}, {0, 0, 902, 770}}},
                 QPoint(400, 500),
                 {422, 224}},
        PlaceRow{"onThePointerWhereAPointIsMissingAfterIt",
                 {{{0, 0, 901, 800}, {0, 0, 901, 770}}},
                 QPoint(400, 500),
                 {160, 224}},
        PlaceRow{"beforeThePointerWhereItJustFits",
                 {{{0, 0, 1000, 800}, {0, 0, 1000, 770}}},
                 QPoint(502, 500),
                 {0, 224}},
        PlaceRow{"onThePointerWhereAPointIsMissingBeforeIt",
                 {{{0, 0, 1000, 800}, {0, 0, 1000, 770}}},
                 QPoint(501, 500),
                 {261, 224}},
        PlaceRow{"besideTheEndOfAThickBarAtTheTop",
                 {{full, {0, 100, 1280, 700}}},
                 QPoint(640, 100),
                 {400, 106}},
        PlaceRow{"besideTheEndOfAThickBarAtTheBottom",
                 {{full, {0, 0, 1280, 700}}},
                 QPoint(640, 699),
                 {400, 154}},
        PlaceRow{"besideTheEndOfAThickBarAtTheLeft",
                 {{full, {100, 0, 1180, 800}}},
                 QPoint(100, 400),
                 {106, 130}},
        PlaceRow{"besideTheEndOfAThickBarAtTheRight",
                 {{full, {0, 0, 1180, 800}}},
                 QPoint(1179, 400),
                 {694, 130}},
        PlaceRow{"atALeftBarFarFromThePointer",
                 {{{0, 0, 1280, 1400}, {30, 0, 1250, 1400}}},
                 QPoint(700, 700),
                 {36, 430}},
        PlaceRow{"nowhereWithoutAScreen", {}, QPoint(200, 10), {0, 0}}),
    rowName);

struct EdgeRow
{
    const char *name;
    QPoint place;
    std::optional<Qt::Edge> edge;
    QRect screen = full;
};

class NearEdge : public testing::TestWithParam<EdgeRow>
{
};

TEST_P(NearEdge, isWithinTheHeightOfABar)
{
    EXPECT_EQ(nearEdge(GetParam().place, GetParam().screen), GetParam().edge);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, NearEdge,
    testing::Values(EdgeRow{"top", {640, 64}, Qt::TopEdge},
                    EdgeRow{"belowTop", {640, 65}, std::nullopt},
                    EdgeRow{"bottom", {640, 735}, Qt::BottomEdge},
                    EdgeRow{"aboveBottom", {640, 734}, std::nullopt},
                    EdgeRow{"left", {64, 400}, Qt::LeftEdge},
                    EdgeRow{"besideLeft", {65, 400}, std::nullopt},
                    EdgeRow{"right", {1215, 400}, Qt::RightEdge},
                    EdgeRow{"besideRight", {1214, 400}, std::nullopt},
                    EdgeRow{"upperCorner", {0, 0}, Qt::TopEdge},
                    EdgeRow{"lowerCorner", {1279, 799}, Qt::BottomEdge},
                    EdgeRow{"middleOfALowScreen", {640, 50}, Qt::TopEdge, {0, 0, 1280, 101}},
                    EdgeRow{"secondScreen", {1300, 400}, Qt::LeftEdge, {1280, 0, 1280, 800}},
                    EdgeRow{"lowerScreen", {640, 830}, Qt::TopEdge, {0, 800, 1280, 800}}),
    rowName);

struct AnchorRow
{
    const char *name;
    ItemTraces traces;
    std::optional<QPoint> anchor;
};

class ItemAnchor : public testing::TestWithParam<AnchorRow>
{
};

TEST_P(ItemAnchor, isTheMostCredibleTrace)
{
    EXPECT_EQ(itemAnchor(GetParam().traces), GetParam().anchor);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ItemAnchor,
    testing::Values(
        AnchorRow{"pointerOfAClick", {{barAtTop}, QPoint(900, 10), true, {}, {}}, QPoint(900, 10)},
        AnchorRow{"pointerOfAClickThoughTheTrayTellsItsOwnCoordinates",
                  {{barAtBottom}, QPoint(900, 790), true, QPoint(12, 10), {}},
                  QPoint(900, 790)},
        AnchorRow{"pointerOfAClickOnABarInTheMiddle",
                  {{noBar}, QPoint(640, 400), true, {}, {}},
                  QPoint(640, 400)},
        AnchorRow{"pointerNearWhatTheTrayTells",
                  {{noBar}, QPoint(640, 400), false, QPoint(650, 410), {}},
                  QPoint(640, 400)},
        AnchorRow{"pointerJustNearWhatTheTrayTells",
                  {{noBar}, QPoint(640, 400), false, QPoint(672, 432), {}},
                  QPoint(640, 400)},
        AnchorRow{"tidingsAPointTooFarFromThePointer",
                  {{noBar}, QPoint(640, 400), false, QPoint(673, 432), {}},
                  std::nullopt},
        AnchorRow{"tidingsFarFromThePointerMeanTheKeyboard",
                  {{barAtTop}, QPoint(300, 500), false, QPoint(1200, 15), {}},
                  QPoint(1200, 15)},
        AnchorRow{"tidingsWhereThePointerIsUnknown",
                  {{barAtTop}, {}, false, QPoint(1200, 15), QPoint(900, 10)},
                  QPoint(1200, 15)},
        AnchorRow{"tidingsFromTheMiddleOfAScreenAreNotBelieved",
                  {{barAtTop}, {}, false, QPoint(600, 400), QPoint(900, 10)},
                  QPoint(900, 10)},
        AnchorRow{"tidingsFromTheEndOfTheNumbersAreNotNear",
                  {{barAtTop}, QPoint(640, 400), false, QPoint(greatest, greatest), {}},
                  std::nullopt},
        AnchorRow{"tidingsFromTheBeginningOfTheNumbersAreNotNear",
                  {{barAtTop}, QPoint(640, 400), false, QPoint(least, least), QPoint(900, 10)},
                  QPoint(900, 10)},
        AnchorRow{"originTellsNothing",
                  {{barAtTop}, {}, false, QPoint(0, 0), QPoint(900, 10)},
                  QPoint(900, 10)},
        AnchorRow{"pointerOnABarWithoutAClick",
                  {{barAtTop}, QPoint(900, 10), false, {}, {}},
                  QPoint(900, 10)},
        AnchorRow{"lastPlaceWhereThePointerIsElsewhere",
                  {{barAtTop}, QPoint(300, 500), false, {}, QPoint(900, 10)},
                  QPoint(900, 10)},
        AnchorRow{"lastPlaceOnAScreenThatIsGone",
                  {{barAtTop}, {}, false, {}, QPoint(2000, 1060)},
                  std::nullopt},
        AnchorRow{"pixelsAtOneAndAHalf",
                  {{barAtBottomAt150}, {}, false, QPoint(1595, 1170), {}, true},
                  QPoint(1063, 780)},
        AnchorRow{"pixelsAtTwo",
                  {{barAtTopAt200}, {}, false, QPoint(2400, 20), {}, true},
                  QPoint(1200, 10)},
        AnchorRow{"pixelsThatCouldBePoints",
                  {{barAtTopAt200}, {}, false, QPoint(1000, 20), {}, true},
                  QPoint(500, 10)},
        AnchorRow{"pointsAtTwo",
                  {{barAtTopAt200}, {}, false, QPoint(1000, 20), {}, false},
                  QPoint(1000, 20)},
        AnchorRow{"pixelsFromATrayThatShouldTellPoints",
                  {{barAtBottomAt150}, {}, false, QPoint(1595, 1170), {}, false},
                  QPoint(1063, 780)},
        AnchorRow{"pointsFromATrayThatShouldTellPixels",
                  {{barAtBottomAt150}, {}, false, QPoint(1063, 780), {}, true},
                  QPoint(1063, 780)},
        AnchorRow{"pixelsOnTheSecondScreen",
                  {{barAtBottomAt150, secondAt200}, {}, false, QPoint(3720, 1060), {}, true},
                  QPoint(2820, 530)},
        AnchorRow{"pixelsNearThePointer",
                  {{barAtTopAt200}, QPoint(640, 400), false, QPoint(1280, 800), {}, true},
                  QPoint(640, 400)},
        AnchorRow{"nothing", {{barAtTop}, QPoint(300, 500), false, {}, {}}, std::nullopt}),
    rowName);
