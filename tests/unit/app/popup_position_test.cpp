#include <gtest/gtest.h>

#include "app/popup.h"
#include "app/state/app_state.h"

namespace {

struct Corner {
    LONG x;
    LONG y;

    bool operator==(const Corner&) const = default;
};

Corner PositionAt(std::uint32_t dpi, const RECT& workArea) {
    g_app = AppState{};
    g_app.dpi = dpi;
    const POINT corner = PopupPosition(workArea);
    return {corner.x, corner.y};
}

}  // namespace

// At 96 DPI the popup is 320 x 540, its margin 10.

TEST(PopupPosition, SitsInTheBottomRightCornerAboveATaskbarAtTheBottom) {
    EXPECT_EQ(PositionAt(96, {0, 0, 1920, 1040}), (Corner{1590, 490}));
}

TEST(PopupPosition, SitsInTheBottomRightCornerWithATaskbarOnTheLeft) {
    EXPECT_EQ(PositionAt(96, {62, 0, 1920, 1080}), (Corner{1590, 530}));
}

TEST(PopupPosition, SitsInTheBottomRightCornerWithATaskbarAtTheTop) {
    EXPECT_EQ(PositionAt(96, {0, 40, 1920, 1080}), (Corner{1590, 530}));
}

TEST(PopupPosition, SitsLeftOfATaskbarOnTheRight) {
    EXPECT_EQ(PositionAt(96, {0, 0, 1858, 1080}), (Corner{1528, 530}));
}

TEST(PopupPosition, FollowsAMonitorLeftOfAndAboveThePrimaryOne) {
    EXPECT_EQ(PositionAt(96, {-1920, -200, 0, 880}), (Corner{-330, 330}));
    EXPECT_EQ(PositionAt(96, {-1280, -1024, 0, 0}), (Corner{-330, -550}));
}

TEST(PopupPosition, FollowsAMonitorRightOfThePrimaryOne) {
    EXPECT_EQ(PositionAt(96, {1920, 120, 3840, 1160}), (Corner{3510, 610}));
}

TEST(PopupPosition, OnAWorkAreaSmallerThanThePopupTheTopLeftCornerStaysVisible) {
    EXPECT_EQ(PositionAt(96, {100, 50, 400, 550}), (Corner{110, 60}));
    EXPECT_EQ(PositionAt(96, {-640, -480, -400, -100}), (Corner{-630, -470}));
}

TEST(PopupPosition, EachDirectionIsClampedIndependently) {
    EXPECT_EQ(PositionAt(96, {0, 0, 1024, 500}), (Corner{694, 10}));
    EXPECT_EQ(PositionAt(96, {0, 0, 330, 1080}), (Corner{10, 530}));
}

TEST(PopupPosition, AWorkAreaOfThePopupsSizePlusMarginsIsFilled) {
    EXPECT_EQ(PositionAt(96, {0, 0, 340, 560}), (Corner{10, 10}));
    EXPECT_EQ(PositionAt(96, {0, 0, 341, 561}), (Corner{11, 11}));
}

// At 120 DPI 400 x 675 and 13 (12.5 rounded up), at 144 DPI 480 x 810 and 15, at 192 DPI 640 x 1080 and 20.

TEST(PopupPosition, IsScaledWithTheMonitor) {
    EXPECT_EQ(PositionAt(120, {0, 0, 1920, 1040}), (Corner{1507, 352}));
    EXPECT_EQ(PositionAt(144, {0, 0, 2560, 1380}), (Corner{2065, 555}));
    EXPECT_EQ(PositionAt(192, {0, 0, 3840, 2080}), (Corner{3180, 980}));
}

TEST(PopupPosition, AtDoubleScaleOnAFullHdScreenTheTopStaysVisible) {
    EXPECT_EQ(PositionAt(192, {0, 0, 1920, 1040}), (Corner{1260, 20}));
}

TEST(PopupPosition, AnUnknownDpiIsTreatedAs96) {
    EXPECT_EQ(PositionAt(0, {0, 0, 1920, 1040}), (Corner{1590, 490}));
}
