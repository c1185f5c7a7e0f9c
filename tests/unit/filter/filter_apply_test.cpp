// Applying and clearing the filter: the pipeline in use, the consequences of a refused matrix, and the order
// of the calls.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/fake_magnification.h"
#include "filter/filter.h"
#include "filter/legacy_gamma.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);
AMBREL_USES_SEAMS(recorded_cursors);

AMBREL_REPLACE(void, SaveSettings, ()) {
    Record("save legacy=", g_app.useLegacyGamma, " auto=", g_app.legacyModeAutoSet,
           " count=", g_app.consecutiveError87);
}

AMBREL_REPLACE(void, ApplyLegacyRamp, ()) {
    Record("ramp legacy=", g_app.useLegacyGamma);
}

AMBREL_REPLACE(void, RestoreIdentityRamp, ()) {
    Record("identity ramp legacy=", g_app.useLegacyGamma);
}

AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {
    Record("refresh");
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

HWND const kWindow = MakeHandle<HWND>(0x1234);

BOOL WINAPI FakePostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    Record("post ", window == kWindow ? "window" : "elsewhere", " ", message, " ", wParam, " ", lParam);
    return TRUE;
}

// WM_APP + 104 and WM_APP + 106.
const std::string kNotice = "post window 32872 0 0";

std::string FailurePost(DWORD error) {
    return "post window 32874 " + std::to_string(error) + " 0";
}

const std::string kFirst87 = "log: MagSetFullscreenColorEffect error 87 (1/2 before fallback)";
const std::string kFallback = "log: Auto-fallback to Legacy Mode after 2 consecutive error 87s";

// The first call after an accepted and after a refused matrix.
const std::string kTint = "tint cursors";
const std::string kRestore = "restore cursors";

class FilterApply : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_app.filterOn = true;
        g_app.intensity = 0.6;
        g_magnification = FakeMagnification{};
        InstallFakeMagnification();
        g_calls.clear();
    }

    static void ApplyWith(std::vector<DWORD> errors) {
        g_magnification.effectErrors = errors;
        for (std::size_t i = 0; i < errors.size(); ++i)
            ApplyFilter();
    }

    static CallRecord CallsOfOneApply() {
        g_calls.clear();
        ApplyFilter();
        return g_calls;
    }

    static int CountOf(const std::string& call) {
        return static_cast<int>(std::count(g_calls.begin(), g_calls.end(), call));
    }
};

}  // namespace

AMBREL_SEAM(PostMessageW, FakePostMessageW);

TEST_F(FilterApply, SetsOneMatrixTintsTheCursorsAndDoesNothingElse) {
    ApplyFilter();
    EXPECT_THAT(g_calls, ElementsAre("matrix", kTint));
}

TEST_F(FilterApply, EverySuccessfulMatrixIsFollowedByATint) {
    ApplyWith({0, 87, 0, 5, 0, 0});
    EXPECT_THAT(g_calls, ElementsAre("matrix", kTint, "matrix", kRestore, kFirst87, "matrix", kTint, "matrix",
                                     kRestore, FailurePost(5), "matrix", kTint, "matrix", kTint));
}

TEST_F(FilterApply, NeutralSettingsSetTheIdentityMatrix) {
    g_app.intensity = 0.0;
    g_app.brightness = 1.0;
    ApplyFilter();
    EXPECT_THAT(g_calls, ElementsAre("identity matrix", kTint));
}

// legacy_gamma.cpp tints the cursors after the ramp.
TEST_F(FilterApply, InLegacyModeOnlyTheRampIsApplied) {
    g_app.useLegacyGamma = true;
    ApplyFilter();
    EXPECT_THAT(g_calls, ElementsAre("ramp legacy=1"));
}

TEST_F(FilterApply, WithTheFilterOffThePipelineInUseIsCleared) {
    g_app.filterOn = false;
    ApplyFilter();
    g_app.useLegacyGamma = true;
    ApplyFilter();
    EXPECT_THAT(g_calls, ElementsAre(kRestore, "identity matrix", kRestore, "identity ramp legacy=1"));
}

TEST_F(FilterApply, DuringShutdownTheEffectIsClearedAlthoughTheFilterIsOn) {
    g_app.ending = true;
    ApplyFilter();
    g_app.useLegacyGamma = true;
    ApplyFilter();
    EXPECT_THAT(g_calls, ElementsAre(kRestore, "identity matrix", kRestore, "identity ramp legacy=1"));
}

TEST_F(FilterApply, ClearingRestoresTheCursorsAndThenThePipelineInUseWhetherTheFilterIsOnOrOff) {
    for (const bool on : {true, false}) {
        g_app.filterOn = on;
        g_app.useLegacyGamma = false;
        ClearFilter();
        g_app.useLegacyGamma = true;
        ClearFilter();
    }
    EXPECT_THAT(g_calls, ElementsAre(kRestore, "identity matrix", kRestore, "identity ramp legacy=1",
                                     kRestore, "identity matrix", kRestore, "identity ramp legacy=1"));
}

TEST_F(FilterApply, WithoutAnInitialisedApiNothingIsDoneAndNothingIsInitialised) {
    g_app.magnificationReady = false;
    ApplyFilter();
    g_app = AppState{};
    g_app.filterOn = true;
    ApplyFilter();
    EXPECT_THAT(g_calls, IsEmpty());
}

TEST_F(FilterApply, WithoutTheMatrixCallNothingIsDone) {
    g_app.magSetFullscreenColorEffect = nullptr;
    ApplyFilter();
    EXPECT_THAT(g_calls, IsEmpty());
}

TEST_F(FilterApply, ClearingWithoutAUsableApiStillRestoresTheCursors) {
    g_app.magSetFullscreenColorEffect = nullptr;
    ClearFilter();
    g_app.magnificationReady = false;
    ClearFilter();
    EXPECT_THAT(g_calls, ElementsAre(kRestore, kRestore));
}

TEST_F(FilterApply, OneError87IsLoggedAndTolerated) {
    ApplyWith({87});
    EXPECT_THAT(g_calls, ElementsAre("matrix", kRestore, kFirst87));
    EXPECT_EQ(g_app.consecutiveError87, 1);
    EXPECT_FALSE(g_app.useLegacyGamma);
}

TEST_F(FilterApply, ASuccessAfterAnError87ResetsTheCount) {
    ApplyWith({87, 0});
    EXPECT_EQ(g_app.consecutiveError87, 0);
    EXPECT_FALSE(g_app.useLegacyGamma);
    EXPECT_THAT(g_calls, ElementsAre("matrix", kRestore, kFirst87, "matrix", kTint));
}

TEST_F(FilterApply, TheSecondConsecutiveError87SwitchesToLegacyMode) {
    ApplyWith({87, 87});
    EXPECT_THAT(g_calls, ElementsAre("matrix", kRestore, kFirst87, "matrix", kRestore, kFallback,
                                     "save legacy=1 auto=1 count=0", "ramp legacy=1", "refresh", kNotice));
    EXPECT_TRUE(g_app.useLegacyGamma);
    EXPECT_TRUE(g_app.legacyModeAutoSet);
    EXPECT_FALSE(g_app.fallbackSuppressed);
    EXPECT_FALSE(g_app.failureNoticeShown);
    EXPECT_EQ(g_app.consecutiveError87, 0);
}

TEST_F(FilterApply, PersistentError87SwitchesOnceAndThenSetsNoMatrix) {
    g_magnification.laterEffectErrors = 87;
    for (int i = 0; i < 6; ++i)
        ApplyFilter();
    EXPECT_THAT(g_calls, ElementsAre("matrix", kRestore, kFirst87, "matrix", kRestore, kFallback,
                                     "save legacy=1 auto=1 count=0", "ramp legacy=1", "refresh", kNotice,
                                     "ramp legacy=1", "ramp legacy=1", "ramp legacy=1", "ramp legacy=1"));
}

TEST_F(FilterApply, TheFallbackLeavesTheApiLoadedAndInitialised) {
    ApplyWith({87, 87});
    EXPECT_TRUE(g_app.magnificationReady);
    EXPECT_NE(g_app.magSetFullscreenColorEffect, nullptr);
    EXPECT_EQ(g_magnification.modulesHeld, 1);
}

TEST_F(FilterApply, ASuccessBetweenTwoErrors87KeepsThePipeline) {
    ApplyWith({87, 0, 87, 0, 87});
    EXPECT_FALSE(g_app.useLegacyGamma);
    EXPECT_EQ(g_app.consecutiveError87, 1);
    EXPECT_EQ(CountOf(kFirst87), 3);
    EXPECT_EQ(CountOf(kFallback), 0);
}

TEST_F(FilterApply, AnotherErrorBetweenTwoErrors87KeepsThePipeline) {
    ApplyWith({87, 5, 87});
    EXPECT_THAT(g_calls, ElementsAre("matrix", kRestore, kFirst87, "matrix", kRestore, FailurePost(5),
                                     "matrix", kRestore, kFirst87));
    EXPECT_FALSE(g_app.useLegacyGamma);
    EXPECT_EQ(g_app.consecutiveError87, 1);
}

TEST_F(FilterApply, AnotherErrorResetsTheCountEvenWhenItIsNotShownAnyMore) {
    g_app.failureNoticeShown = true;
    ApplyWith({87, 5});
    EXPECT_EQ(g_app.consecutiveError87, 0);
    EXPECT_THAT(g_calls, ElementsAre("matrix", kRestore, kFirst87, "matrix", kRestore));
}

TEST_F(FilterApply, ClearingTheFilterDoesNotResetTheError87Count) {
    ApplyWith({87});
    g_app.filterOn = false;
    ApplyFilter();
    g_app.filterOn = true;
    EXPECT_EQ(g_app.consecutiveError87, 1);
    ApplyWith({87});
    EXPECT_TRUE(g_app.useLegacyGamma);
}

TEST_F(FilterApply, ARefusedIdentityMatrixIsNotCounted) {
    g_app.filterOn = false;
    ApplyWith({87, 87, 5});
    EXPECT_THAT(g_calls, ElementsAre(kRestore, "identity matrix", kRestore, "identity matrix", kRestore,
                                     "identity matrix"));
    EXPECT_EQ(g_app.consecutiveError87, 0);
    EXPECT_FALSE(g_app.failureNoticeShown);
}

TEST_F(FilterApply, AFallbackThatWasShownInAnEarlierRunShowsNoNotice) {
    g_app.legacyModeAutoSet = true;
    ApplyWith({87, 87});
    EXPECT_THAT(g_calls, ElementsAre("matrix", kRestore, kFirst87, "matrix", kRestore, kFallback,
                                     "save legacy=1 auto=1 count=0", "ramp legacy=1", "refresh"));
}

TEST_F(FilterApply, WithoutAWindowTheFallbackPostsNothing) {
    g_app.mainWindow = nullptr;
    ApplyWith({87, 87});
    EXPECT_THAT(g_calls, ElementsAre("matrix", kRestore, kFirst87, "matrix", kRestore, kFallback,
                                     "save legacy=1 auto=1 count=0", "ramp legacy=1", "refresh"));
}

TEST_F(FilterApply, AnotherErrorIsPostedWithItsCodeOncePerRun) {
    ApplyWith({5, 5, 1400, 31});
    EXPECT_THAT(g_calls, ElementsAre("matrix", kRestore, FailurePost(5), "matrix", kRestore, "matrix",
                                     kRestore, "matrix", kRestore));
    EXPECT_TRUE(g_app.failureNoticeShown);
    EXPECT_FALSE(g_app.useLegacyGamma);
}

TEST_F(FilterApply, AnInterveningSuccessDoesNotShowTheFailureAgain) {
    ApplyWith({1400, 0, 1400});
    EXPECT_THAT(g_calls,
                ElementsAre("matrix", kRestore, FailurePost(1400), "matrix", kTint, "matrix", kRestore));
}

TEST_F(FilterApply, ErrorCodesArePostedUntruncatedAndUnsigned) {
    ApplyWith({0x8007000E});
    EXPECT_THAT(g_calls, ElementsAre("matrix", kRestore, FailurePost(2147942414U)));
}

TEST_F(FilterApply, WithoutAWindowTheFailureIsTreatedAsShownAndIsNotPosted) {
    g_app.mainWindow = nullptr;
    ApplyWith({5});
    EXPECT_THAT(g_calls, ElementsAre("matrix", kRestore));
    EXPECT_TRUE(g_app.failureNoticeShown);
    g_app.mainWindow = kWindow;
    EXPECT_EQ(CallsOfOneApply(), (CallRecord{"matrix", kTint}));
    g_magnification.effectErrors = {5};
    EXPECT_EQ(CallsOfOneApply(), (CallRecord{"matrix", kRestore}));
}

TEST_F(FilterApply, WhileTheFallbackIsSuppressedError87IsAFailureLikeAnyOther) {
    g_app.fallbackSuppressed = true;
    g_magnification.laterEffectErrors = 87;
    for (int i = 0; i < 5; ++i)
        ApplyFilter();
    EXPECT_THAT(g_calls, ElementsAre("matrix", kRestore, FailurePost(87), "matrix", kRestore, "matrix",
                                     kRestore, "matrix", kRestore, "matrix", kRestore));
    EXPECT_FALSE(g_app.useLegacyGamma);
    EXPECT_FALSE(g_app.legacyModeAutoSet);
    EXPECT_EQ(g_app.consecutiveError87, 0);
}

TEST_F(FilterApply, ASuppressedError87AfterTheFailureBoxShowsNothing) {
    ApplyWith({5});
    g_app.fallbackSuppressed = true;
    g_app.consecutiveError87 = 1;
    g_magnification.effectErrors = {87};
    EXPECT_EQ(CallsOfOneApply(), (CallRecord{"matrix", kRestore}));
    EXPECT_EQ(g_app.consecutiveError87, 0);
}

TEST_F(FilterApply, TheFallbackRemovesTheLastMatrixBeforeTheRamp) {
    ApplyWith({0, 87});
    g_calls.clear();
    ApplyWith({87});
    EXPECT_THAT(g_calls, ElementsAre("matrix", kRestore, kFallback, "save legacy=1 auto=1 count=0",
                                     "identity matrix", "ramp legacy=1", "refresh", kNotice));
    EXPECT_FALSE(g_app.matrixApplied);
    EXPECT_TRUE(g_app.magnificationReady);
}

TEST_F(FilterApply, AFallbackWhoseIdentityMatrixIsRefusedReinitialisesTheApi) {
    ApplyWith({0, 87});
    g_magnification.laterEffectErrors = 87;
    g_calls.clear();
    ApplyFilter();
    EXPECT_THAT(g_calls,
                ElementsAre("matrix", kRestore, kFallback, "save legacy=1 auto=1 count=0", "identity matrix",
                            "MagUninitialize", "MagInitialize", "ramp legacy=1", "refresh", kNotice));
    EXPECT_TRUE(g_app.magnificationReady);
    EXPECT_FALSE(g_app.matrixApplied);
    EXPECT_EQ(g_magnification.modulesHeld, 1) << "the library stays loaded";
}

TEST_F(FilterApply, WhenReinitialisationFailsTheApiIsNotReadyAndLeavingLegacyModeReloadsIt) {
    ApplyWith({0, 87});
    g_magnification.laterEffectErrors = 87;
    g_magnification.initializeError = ERROR_NOT_READY;
    ApplyFilter();
    EXPECT_FALSE(g_app.magnificationReady);
    EXPECT_EQ(g_magnification.modulesHeld, 1);

    g_magnification.initializeError = 0;
    g_magnification.laterEffectErrors = 0;
    g_calls.clear();
    ToggleLegacyMode();
    EXPECT_THAT(g_calls, ElementsAre(kRestore, "identity ramp legacy=1", "free", "load Magnification.dll",
                                     "find MagInitialize", "find MagUninitialize",
                                     "find MagSetFullscreenColorEffect", "MagInitialize", "matrix", kTint));
    EXPECT_TRUE(g_app.magnificationReady);
    EXPECT_EQ(g_magnification.modulesHeld, 1);
}

TEST_F(FilterApply, AMatrixThatWasRemovedBeforeTheFallbackIsNotRemovedAgain) {
    ApplyWith({0});
    g_app.filterOn = false;
    ApplyFilter();
    g_app.filterOn = true;
    g_calls.clear();
    ApplyWith({87, 87});
    EXPECT_EQ(CountOf("identity matrix"), 0);
    EXPECT_EQ(CountOf("MagUninitialize"), 0);
    EXPECT_TRUE(g_app.useLegacyGamma);
}

TEST_F(FilterApply, AMatrixWhoseRemovalIsRefusedTwiceIsRemovedWithTheApi) {
    ApplyWith({0});
    g_app.filterOn = false;
    g_magnification.laterEffectErrors = 5;
    g_calls.clear();
    ApplyFilter();
    EXPECT_EQ(CountOf("identity matrix"), 2);
    EXPECT_EQ(CountOf("MagUninitialize"), 1);
    EXPECT_EQ(CountOf("MagInitialize"), 1);
    EXPECT_FALSE(g_app.matrixApplied);
    EXPECT_TRUE(g_app.magnificationReady);
}

TEST_F(FilterApply, ANeutralFilterLeavesNothingToRemove) {
    g_app.intensity = 0.0;
    g_app.brightness = 1.0;
    ApplyWith({0});
    EXPECT_FALSE(g_app.matrixApplied);
    g_app.intensity = 0.6;
    g_calls.clear();
    ApplyWith({87, 87});
    EXPECT_EQ(CountOf("identity matrix"), 0);
}

TEST_F(FilterApply, DimmingAloneIsAnAppliedMatrix) {
    g_app.intensity = 0.0;
    g_app.brightness = 0.999;
    ApplyWith({0});
    EXPECT_TRUE(g_app.matrixApplied);
}
