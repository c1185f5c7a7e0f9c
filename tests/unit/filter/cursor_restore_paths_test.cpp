// The cursors follow the screen: they are tinted after each apply of either pipeline, restored on every path
// that clears it, and tinted again at the same settings after that.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/cursor_tint.h"
#include "filter/fake_cursors.h"
#include "filter/fake_magnification.h"
#include "filter/fake_screen.h"
#include "filter/filter.h"
#include "filter/legacy_gamma.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);

AMBREL_REPLACE(void, SaveSettings, ()) {}
AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

BOOL WINAPI FakePostMessageW(HWND, UINT, WPARAM, LPARAM) {
    return TRUE;
}

class CursorRestorePaths : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.filterOn = true;
        g_app.intensity = 0.5;
        g_app.brightness = 0.75;
        g_magnification = FakeMagnification{};
        InstallFakeMagnification();
        g_screen = FakeScreen{};
        g_cursors = FakeCursors{};
        g_calls.clear();
    }

    void TearDown() override { ReleaseCursorCopies(); }

    static void StartTinted(bool legacy) {
        g_app.useLegacyGamma = legacy;
        ApplyFilter();
        ExpectTinted();
        g_calls.clear();
    }

    static void ExpectTinted() {
        EXPECT_TRUE(g_app.cursorsTinted);
        EXPECT_EQ(g_app.lastCursorTint.intensity, g_app.intensity);
        EXPECT_EQ(g_app.lastCursorTint.brightness, g_app.brightness);
        EXPECT_EQ(g_cursors.current.size(), 16U);
    }

    static void ExpectRestored() {
        EXPECT_FALSE(g_app.cursorsTinted);
        EXPECT_EQ(g_app.lastCursorTint.intensity, -1.0);
        EXPECT_EQ(g_app.lastCursorTint.brightness, -1.0);
        EXPECT_THAT(g_cursors.current, IsEmpty());
    }

    // Restored, and the same settings tint them again.
    static void ExpectRestoredAndTintedAgain() {
        ExpectRestored();
        g_app.filterOn = true;
        ApplyFilter();
        ExpectTinted();
    }
};

}  // namespace

AMBREL_SEAM(PostMessageW, FakePostMessageW);

TEST_F(CursorRestorePaths, AMatrixAndARampAreEachFollowedByATintInTheirColour) {
    StartTinted(false);
    g_app.intensity = 0.6;
    StartTinted(true);
    EXPECT_EQ(g_cursors.built.front(), WhiteAt(0.5, 0.75));
    EXPECT_EQ(g_cursors.built.back(), WhiteAt(0.6, 0.75));
}

TEST_F(CursorRestorePaths, ARefusedRampStillTints) {
    g_screen.acceptsRamps = false;
    StartTinted(true);
    EXPECT_TRUE(g_app.lastApplyRejected);
}

TEST_F(CursorRestorePaths, ARampThatReadsBackDifferentlyStillTints) {
    g_screen.deviations = {{kRed, 0, 5000}};
    g_app.readBackMismatchStreak = 2;
    StartTinted(true);
    EXPECT_TRUE(g_app.lastApplyRejected);
}

TEST_F(CursorRestorePaths, WithoutAScreenTheCursorsAreStillTinted) {
    g_screen.givesContext = false;
    StartTinted(true);
}

TEST_F(CursorRestorePaths, SwitchingTheFilterOffRestoresThemBeforeTheScreen) {
    StartTinted(false);
    g_app.filterOn = false;
    ApplyFilter();
    EXPECT_THAT(g_calls, ElementsAre("system cursors", "identity matrix"));
    ExpectRestoredAndTintedAgain();

    StartTinted(true);
    g_app.filterOn = false;
    ApplyFilter();
    EXPECT_THAT(g_calls, ElementsAre("system cursors", "get dc", "set ramp", "release dc"));
    ExpectRestoredAndTintedAgain();
}

TEST_F(CursorRestorePaths, ClearingTheFilterRestoresThemBeforeTheScreen) {
    StartTinted(false);
    ClearFilter();
    EXPECT_THAT(g_calls, ElementsAre("system cursors", "identity matrix"));
    ExpectRestoredAndTintedAgain();

    StartTinted(true);
    ClearFilter();
    EXPECT_THAT(g_calls, ElementsAre("system cursors", "get dc", "set ramp", "release dc"));
    ExpectRestoredAndTintedAgain();
}

TEST_F(CursorRestorePaths, ClearingWithoutAPipelineRestoresThem) {
    StartTinted(false);
    g_app.magnificationReady = false;
    ClearFilter();
    EXPECT_THAT(g_calls, ElementsAre("system cursors"));
    ExpectRestored();
}

TEST_F(CursorRestorePaths, RestoringTheIdentityRampRestoresThemInBothPipelines) {
    for (const bool legacy : {false, true}) {
        StartTinted(legacy);
        RestoreIdentityRamp();
        EXPECT_THAT(g_calls, ElementsAre("system cursors", "get dc", "set ramp", "release dc"));
        ExpectRestoredAndTintedAgain();
    }
}

TEST_F(CursorRestorePaths, RestoringTheIdentityRampWithoutAScreenRestoresThem) {
    StartTinted(true);
    g_screen.givesContext = false;
    RestoreIdentityRamp();
    ExpectRestored();
}

TEST_F(CursorRestorePaths, ARefusedMatrixRestoresThemAndTheNextAcceptedOneTintsAgain) {
    for (const DWORD error : {DWORD{5}, DWORD{87}}) {
        StartTinted(false);
        g_magnification.effectErrors = {error};
        ApplyFilter();
        ASSERT_GE(g_calls.size(), 2U);
        EXPECT_EQ(g_calls[0], "matrix");
        EXPECT_EQ(g_calls[1], "system cursors");
        ExpectRestoredAndTintedAgain();
    }
}

TEST_F(CursorRestorePaths, RepeatedlyRefusedMatricesRestoreThemOnce) {
    StartTinted(false);
    g_magnification.laterEffectErrors = 5;
    for (int i = 0; i < 3; ++i)
        ApplyFilter();
    EXPECT_EQ(std::count(g_calls.begin(), g_calls.end(), "system cursors"), 1);
    ExpectRestored();
}

TEST_F(CursorRestorePaths, TheFallbackToLegacyModeTintsThemAgainWithItsRamp) {
    StartTinted(false);
    g_magnification.laterEffectErrors = 87;
    ApplyFilter();
    ExpectRestored();
    ApplyFilter();
    EXPECT_TRUE(g_app.useLegacyGamma);
    ExpectTinted();
}

TEST_F(CursorRestorePaths, SwitchingThePipelineRestoresThemAndTintsThemAgain) {
    StartTinted(false);
    ToggleLegacyMode();
    EXPECT_EQ(std::count(g_calls.begin(), g_calls.end(), "system cursors"), 1);
    ExpectTinted();
    g_calls.clear();
    ToggleLegacyMode();
    EXPECT_EQ(std::count(g_calls.begin(), g_calls.end(), "system cursors"), 1);
    ExpectTinted();
}

TEST_F(CursorRestorePaths, WithTheFilterOffSwitchingThePipelineLeavesThemAlone) {
    g_app.filterOn = false;
    ToggleLegacyMode();
    ToggleLegacyMode();
    EXPECT_FALSE(g_app.baseCursorsLoaded);
    EXPECT_THAT(g_cursors.current, IsEmpty());
}

TEST_F(CursorRestorePaths, DuringShutdownAnApplyRestoresThem) {
    StartTinted(false);
    g_app.ending = true;
    ApplyFilter();
    ExpectRestored();
}

TEST_F(CursorRestorePaths, ATintDuringShutdownCreatesNoNewCopies) {
    StartTinted(false);
    g_app.ending = true;
    ReleaseCursorCopies();
    g_calls.clear();
    TintSystemCursors();
    EXPECT_THAT(g_calls, testing::IsEmpty());
    EXPECT_FALSE(g_app.baseCursorsLoaded);
}

TEST_F(CursorRestorePaths, AMoveInsideTheDeadBandSetsTheScreenAndNoCursor) {
    StartTinted(false);
    g_app.intensity = 0.501;
    ApplyFilter();
    EXPECT_THAT(g_calls, ElementsAre("matrix"));
    g_app.useLegacyGamma = true;
    g_app.brightness = 0.751;
    g_calls.clear();
    ApplyFilter();
    EXPECT_THAT(g_calls, ElementsAre("get dc", "set ramp", "read ramp", "release dc"));
}

TEST_F(CursorRestorePaths, CursorsThatCannotBeTintedDoNotAffectTheScreen) {
    for (const int id : kIds)
        g_cursors.notSet.insert(id);
    ApplyFilter();
    EXPECT_EQ(g_app.consecutiveError87, 0);
    EXPECT_FALSE(g_app.cursorsTinted);
    g_app.useLegacyGamma = true;
    ApplyFilter();
    EXPECT_EQ(g_app.rampsAccepted, 1);
    g_calls.clear();
    g_app.filterOn = false;
    ApplyFilter();
    EXPECT_THAT(g_calls, ElementsAre("get dc", "set ramp", "release dc")) << "there is nothing to restore";
}
