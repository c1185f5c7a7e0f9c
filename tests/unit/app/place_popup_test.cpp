#include <gtest/gtest.h>

#include "app/popup.h"
#include "app/state/app_state.h"

namespace {

struct Corner {
    LONG x;
    LONG y;

    bool operator==(const Corner&) const = default;
};

Corner PlaceAt(std::uint32_t dpi, const RECT& workArea) {
    g_app = AppState{};
    g_app.dpi = dpi;
    const POINT corner = PlacePopup(workArea);
    return {corner.x, corner.y};
}

}  // namespace

// At 96 DPI the popup is 320 x 540, its margin 10.

TEST(PlacePopup, SitsInTheBottomRightCornerAboveATaskbarAtTheBottom) {
    EXPECT_EQ(PlaceAt(96, {0, 0, 1920, 1040}), (Corner{1590, 490}));
}

TEST(PlacePopup, SitsInTheBottomRightCornerWithATaskbarOnTheLeft) {
    EXPECT_EQ(PlaceAt(96, {62, 0, 1920, 1080}), (Corner{1590, 530}));
}

TEST(PlacePopup, SitsInTheBottomRightCornerWithATaskbarAtTheTop) {
    EXPECT_EQ(PlaceAt(96, {0, 40, 1920, 1080}), (Corner{1590, 530}));
}

TEST(PlacePopup, SitsLeftOfATaskbarOnTheRight) {
    EXPECT_EQ(PlaceAt(96, {0, 0, 1858, 1080}), (Corner{1528, 530}));
}

TEST(PlacePopup, FollowsAMonitorLeftOfAndAboveThePrimaryOne) {
    EXPECT_EQ(PlaceAt(96, {-1920, -200, 0, 880}), (Corner{-330, 330}));
    EXPECT_EQ(PlaceAt(96, {-1280, -1024, 0, 0}), (Corner{-330, -550}));
}

TEST(PlacePopup, FollowsAMonitorRightOfThePrimaryOne) {
    EXPECT_EQ(PlaceAt(96, {1920, 120, 3840, 1160}), (Corner{3510, 610}));
}

TEST(PlacePopup, OnAWorkAreaSmallerThanThePopupTheTopLeftCornerStaysVisible) {
    EXPECT_EQ(PlaceAt(96, {100, 50, 400, 550}), (Corner{110, 60}));
    EXPECT_EQ(PlaceAt(96, {-640, -480, -400, -100}), (Corner{-630, -470}));
}

TEST(PlacePopup, EachDirectionIsClampedIndependently) {
    EXPECT_EQ(PlaceAt(96, {0, 0, 1024, 500}), (Corner{694, 10}));
    EXPECT_EQ(PlaceAt(96, {0, 0, 330, 1080}), (Corner{10, 530}));
}

TEST(PlacePopup, AWorkAreaOfThePopupsSizePlusMarginsIsFilled) {
    EXPECT_EQ(PlaceAt(96, {0, 0, 340, 560}), (Corner{10, 10}));
    EXPECT_EQ(PlaceAt(96, {0, 0, 341, 561}), (Corner{11, 11}));
}

// At 120 DPI 400 x 675 and 13 (12.5 rounded up), at 144 DPI 480 x 810 and 15, at 192 DPI 640 x 1080 and 20.

TEST(PlacePopup, IsScaledWithTheMonitor) {
    EXPECT_EQ(PlaceAt(120, {0, 0, 1920, 1040}), (Corner{1507, 352}));
    EXPECT_EQ(PlaceAt(144, {0, 0, 2560, 1380}), (Corner{2065, 555}));
    EXPECT_EQ(PlaceAt(192, {0, 0, 3840, 2080}), (Corner{3180, 980}));
}

TEST(PlacePopup, AtDoubleScaleOnAFullHdScreenTheTopStaysVisible) {
    EXPECT_EQ(PlaceAt(192, {0, 0, 1920, 1040}), (Corner{1260, 20}));
}

TEST(PlacePopup, AnUnknownDpiIsTreatedAs96) {
    EXPECT_EQ(PlaceAt(0, {0, 0, 1920, 1040}), (Corner{1590, 490}));
}
