// One step of a slider drag, from the mouse message to the screen, through the shipped files. It makes only
// the necessary Windows calls and allocates nothing. The cursors have their own tests; here only tinting and
// restoring are recorded.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "app/state/app_state.h"
#include "filter/counted_allocations.h"
#include "filter/drag_platform.h"
#include "filter/filter.h"
#include "filter/import_counter.h"
#include "ui/popup_input.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const CallRecord kRampAndTint = {"get dc", "set ramp", "read ramp", "release dc", "tint cursors"};

constexpr int kWarmthX = 80;
constexpr int kBrightnessX = 240;
constexpr int kPressY = 200;

class DragStep : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_platform = DragPlatform{};
        ClearSteps();
        g_app.mainWindow = DraggedWindow();
        g_app.settingsPath = L"C:\\settings.ini";
        g_app.filterOn = true;
        g_app.intensity = 0.5;
        g_app.magnificationReady = true;
        g_app.magSetFullscreenColorEffect = &FakeSetEffect;
    }

    // Legacy Mode with the filter on: its first ramp was loaded and recorded when the filter was switched on.
    static void StartInLegacyMode() {
        g_app.useLegacyGamma = true;
        g_app.rampApplied = true;
    }

    void Press(int x) {
        OnMouseDown(x, kPressY);
        ClearSteps();
    }

    // Moves the pressed mouse and counts calls and allocations.
    void MoveTo(int y) {
        ClearSteps();
        const int before = AllocationsSoFar();
        counter_.Start();
        OnMouseMove(kWarmthX, y);
        counter_.Stop();
        EXPECT_EQ(AllocationsSoFar(), before);
        ExpectNoOtherCalls();
    }

    // Besides the recorded calls, one coordinate is scaled. The compiler and the formatter may call other
    // functions of the C runtime; none of them makes a system call.
    void ExpectNoOtherCalls() {
        auto calls = counter_.Calls();
        EXPECT_EQ(calls["MulDiv"], 1);
        calls.erase("MulDiv");
        for (const char* harmless : {"_errno", "memset", "memcpy", "memmove", "strlen", "wcslen"})
            calls.erase(harmless);
        EXPECT_THAT(calls, IsEmpty());
    }

    static CallRecord Refreshed(CallRecord first) {
        first.insert(first.end(), {"invalidate", "load icon on", "modify tray icon"});
        return first;
    }

    // A refresh for the banner, and then the tint.
    static CallRecord FirstRefusal() {
        CallRecord steps = Refreshed({"get dc", "set ramp", "release dc"});
        steps.push_back("tint cursors");
        return steps;
    }

    // The drag step that falls back to Legacy Mode: it saves eight settings and records the first ramp.
    static CallRecord WithFallback(const CallRecord& ramp) {
        CallRecord steps = {"matrix", "restore cursors"};
        steps.insert(steps.end(), 8 + 1, "write settings");
        steps.insert(steps.end(), ramp.begin(), ramp.end());
        steps = Refreshed(steps);
        steps.push_back("post");
        return Refreshed(steps);
    }

    ImportCounter counter_;
};

}  // namespace

TEST_F(DragStep, TheCounterDetectsAnyCallAndAnyAllocation) {
    EXPECT_GT(counter_.Watched(), 50U);
    const int before = AllocationsSoFar();
    counter_.Start();
    // Volatile, or the compiler leaves both pairs out.
    void* volatile block = std::malloc(100);
    std::free(block);
    int* volatile number = new int(1);
    delete number;
    GetDoubleClickTime();
    counter_.Stop();
    EXPECT_EQ(AllocationsSoFar(), before + 1);
    auto calls = counter_.Calls();
    EXPECT_EQ(calls["malloc"], 2);
    EXPECT_EQ(calls["free"], 2);
    EXPECT_EQ(calls["GetDoubleClickTime"], 1);
}

TEST_F(DragStep, InMagnificationModeSetsOneMatrixTintsTheCursorsAndRefreshesOnce) {
    Press(kWarmthX);
    for (const int y : {199, 150, 120, 260}) {
        MoveTo(y);
        EXPECT_EQ(Steps(), Refreshed({"matrix", "tint cursors"}));
        EXPECT_DOUBLE_EQ(g_app.intensity, 0.5 + (200 - y) / 198.0);
    }
}

TEST_F(DragStep, InLegacyModeSetsAndReadsOneRampOnOneContextTintsTheCursorsAndRefreshesOnce) {
    StartInLegacyMode();
    Press(kWarmthX);
    for (const int y : {199, 150, 120, 260}) {
        MoveTo(y);
        EXPECT_EQ(Steps(), Refreshed(kRampAndTint));
    }
}

TEST_F(DragStep, ADragOfTheBrightnessMakesTheSameCalls) {
    g_app.brightness = 0.6;
    Press(kBrightnessX);
    MoveTo(210);
    EXPECT_EQ(Steps(), Refreshed({"matrix", "tint cursors"}));
    EXPECT_DOUBLE_EQ(g_app.brightness, 0.6 - 10 / 198.0);
    EXPECT_EQ(g_app.intensity, 0.5);
    StartInLegacyMode();
    MoveTo(220);
    EXPECT_EQ(Steps(), Refreshed(kRampAndTint));
}

TEST_F(DragStep, AtTheEndOfTheTravelMakesTheSameCalls) {
    Press(kWarmthX);
    for (const int y : {-500, -501, 900}) {
        MoveTo(y);
        EXPECT_EQ(Steps(), Refreshed({"matrix", "tint cursors"}));
        EXPECT_EQ(g_app.intensity, y < 0 ? 1.0 : 0.0);
    }
}

TEST_F(DragStep, WithAToleratedReadBackMismatchMakesTheSameCalls) {
    StartInLegacyMode();
    g_platform.readsBackRight = false;
    Press(kWarmthX);
    for (const int y : {199, 198}) {
        MoveTo(y);
        EXPECT_EQ(Steps(), Refreshed(kRampAndTint));
    }
    EXPECT_EQ(g_app.readBackMismatchStreak, 2);
}

TEST_F(DragStep, WithRepeatedlyRefusedRampsLogsAndAllocatesNothing) {
    StartInLegacyMode();
    g_app.lastApplyRejected = true;
    g_platform.acceptsRamps = false;
    Press(kWarmthX);
    for (const int y : {199, 150, 120}) {
        MoveTo(y);
        EXPECT_EQ(Steps(), Refreshed({"get dc", "set ramp", "release dc", "tint cursors"}));
    }
    EXPECT_EQ(g_app.rampsRejected, 3);
}

TEST_F(DragStep, WithTheFilterOffSetsTheIdentityOfThePipelineInUse) {
    g_app.filterOn = false;
    Press(kWarmthX);
    MoveTo(190);
    EXPECT_THAT(Steps(),
                ElementsAre("restore cursors", "matrix", "invalidate", "load icon off", "modify tray icon"));
    g_app.useLegacyGamma = true;
    MoveTo(180);
    EXPECT_THAT(Steps(), ElementsAre("restore cursors", "restore cursors", "get dc", "set ramp", "release dc",
                                     "invalidate", "load icon off", "modify tray icon"));
}

TEST_F(DragStep, WithoutAnyPipelineOnlyRefreshes) {
    g_app.magnificationReady = false;
    Press(kWarmthX);
    MoveTo(190);
    EXPECT_EQ(Steps(), Refreshed({}));
}

TEST_F(DragStep, ApplyingAloneCallsNothingButThePipelineAndTheCursors) {
    const int before = AllocationsSoFar();
    counter_.Start();
    ApplyFilter();
    g_app.useLegacyGamma = true;
    ApplyFilter();
    g_app.filterOn = false;
    ApplyFilter();
    counter_.Stop();
    EXPECT_EQ(AllocationsSoFar(), before);
    EXPECT_THAT(Steps(),
                ElementsAre("matrix", "tint cursors", "write settings", "get dc", "set ramp", "read ramp",
                            "release dc", "tint cursors", "restore cursors", "restore cursors", "get dc",
                            "set ramp", "release dc", "write settings"));
    auto calls = counter_.Calls();
    for (const char* harmless : {"memset", "memcpy", "memmove", "GetPrivateProfileStringW"})
        calls.erase(harmless);
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(DragStep, AMoveWithoutADragCallsNothing) {
    counter_.Start();
    OnMouseMove(kWarmthX, 150);
    counter_.Stop();
    EXPECT_THAT(Steps(), IsEmpty());
    EXPECT_THAT(counter_.Calls(), IsEmpty());
    EXPECT_EQ(g_app.intensity, 0.5);
}

TEST_F(DragStep, SavesNothingAndStartsNoTimerUntilTheButtonIsReleased) {
    OnMouseDown(kWarmthX, kPressY);
    EXPECT_THAT(Steps(), ElementsAre("capture"));
    for (int y = 195; y > 185; --y)
        MoveTo(y);
    ClearSteps();
    OnMouseUp();
    EXPECT_THAT(Steps(), ElementsAre("release capture", "kill timer 1", "set timer 1 500"));
}

TEST_F(DragStep, TheFirstRefusedRampRefreshesForTheBannerAndForTheStep) {
    StartInLegacyMode();
    g_platform.acceptsRamps = false;
    Press(kWarmthX);
    OnMouseMove(kWarmthX, 190);
    EXPECT_EQ(Steps(), Refreshed(FirstRefusal()));
}

TEST_F(DragStep, WithoutAWindowARefusedRampIsCountedTheCursorsAreTintedAndNothingIsRefreshed) {
    g_app.mainWindow = nullptr;
    StartInLegacyMode();
    g_platform.acceptsRamps = false;
    ApplyFilter();
    EXPECT_THAT(Steps(), ElementsAre("get dc", "set ramp", "release dc", "tint cursors"));
    EXPECT_TRUE(g_app.lastApplyRejected);
}

TEST_F(DragStep, TheSecondError87OfADragSavesAppliesTheRampRefreshesAndPosts) {
    g_platform.matrixError = 87;
    Press(kWarmthX);
    OnMouseMove(kWarmthX, 190);
    EXPECT_EQ(Steps(), Refreshed({"matrix", "restore cursors"}));

    ClearSteps();
    OnMouseMove(kWarmthX, 180);
    EXPECT_EQ(Steps(), WithFallback(kRampAndTint));
    EXPECT_EQ(g_app.dragSlider, Slider::Warmth);
}

TEST_F(DragStep, AFallbackWhoseRampIsRefusedTooShowsTheBannerBeforeItsOwnRefresh) {
    g_platform.matrixError = 87;
    g_platform.acceptsRamps = false;
    g_app.consecutiveError87 = 1;
    Press(kWarmthX);
    OnMouseMove(kWarmthX, 190);
    EXPECT_EQ(Steps(), WithFallback(FirstRefusal()));
    EXPECT_TRUE(g_app.useLegacyGamma);
    EXPECT_TRUE(g_app.lastApplyRejected);
}
