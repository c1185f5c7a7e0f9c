// Loading and unloading the Magnification API: every failure, and the state afterwards.
#include "filter/magnification.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "app/state/app_state.h"
#include "filter/fake_magnification.h"
#include "support/call_record.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// MB_ICONERROR is 16, MB_ICONWARNING 48; both boxes have only an OK button.
const std::string kFunctionsMissingBox =
    "box owner=0 flags=16 [Ambrel] Failed to get Magnification API functions.\n\n"
    "This requires Windows 8 or later.";

class MagnificationLoad : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = MakeHandle<HWND>(0x1234);
        g_magnification = FakeMagnification{};
        g_calls.clear();
    }

    static void ExpectNothingLoaded() {
        EXPECT_FALSE(g_app.magnificationReady);
        EXPECT_EQ(g_app.magnificationModule, nullptr);
        EXPECT_FALSE(IsMagnificationUsable());
        EXPECT_EQ(g_magnification.modulesHeld, 0);
    }

    static void ExpectEntryPointsCleared() {
        EXPECT_EQ(g_app.magInitialize, nullptr);
        EXPECT_EQ(g_app.magUninitialize, nullptr);
        EXPECT_EQ(g_app.magSetFullscreenColorEffect, nullptr);
    }

    static void ExpectMissingFunctionReported() {
        InitMagnification();
        // All three are looked up, and the module is freed after the box.
        EXPECT_THAT(g_calls,
                    ElementsAre("load Magnification.dll", "find MagInitialize", "find MagUninitialize",
                                "find MagSetFullscreenColorEffect", kFunctionsMissingBox, "free"));
        ExpectNothingLoaded();
    }
};

}  // namespace

TEST_F(MagnificationLoad, LoadsFindsTheThreeFunctionsAndInitialisesOnce) {
    InitMagnification();
    EXPECT_THAT(g_calls, ElementsAre("load Magnification.dll", "find MagInitialize", "find MagUninitialize",
                                     "find MagSetFullscreenColorEffect", "MagInitialize"));
    EXPECT_TRUE(g_app.magnificationReady);
    EXPECT_TRUE(IsMagnificationUsable());
    EXPECT_EQ(g_app.magnificationModule, FakeModule());
    EXPECT_NE(g_app.magInitialize, nullptr);
    EXPECT_NE(g_app.magUninitialize, nullptr);
    EXPECT_NE(g_app.magSetFullscreenColorEffect, nullptr);
}

TEST_F(MagnificationLoad, DoesNothingIfAlreadyInitialised) {
    InitMagnification();
    g_calls.clear();
    InitMagnification();
    EXPECT_THAT(g_calls, IsEmpty());
    EXPECT_EQ(g_magnification.modulesHeld, 1);
}

TEST_F(MagnificationLoad, DoesNothingInLegacyMode) {
    g_app.useLegacyGamma = true;
    InitMagnification();
    EXPECT_THAT(g_calls, IsEmpty());
    ExpectNothingLoaded();
}

TEST_F(MagnificationLoad, InLegacyModeALoadedLibraryStaysLoaded) {
    InstallFakeMagnification();
    g_app.magSetFullscreenColorEffect = nullptr;
    g_app.useLegacyGamma = true;
    InitMagnification();
    EXPECT_THAT(g_calls, IsEmpty());
    EXPECT_TRUE(g_app.magnificationReady);
    EXPECT_EQ(g_app.magnificationModule, FakeModule());
}

TEST_F(MagnificationLoad, InitialisedWithoutTheMatrixFunctionItIsShutDownAndReloaded) {
    InstallFakeMagnification();
    g_app.magSetFullscreenColorEffect = nullptr;
    InitMagnification();
    EXPECT_THAT(g_calls,
                ElementsAre("MagUninitialize", "free", "load Magnification.dll", "find MagInitialize",
                            "find MagUninitialize", "find MagSetFullscreenColorEffect", "MagInitialize"));
    EXPECT_TRUE(IsMagnificationUsable());
    EXPECT_EQ(g_magnification.modulesHeld, 1);
}

TEST_F(MagnificationLoad, AModuleLeftWithoutInitialisationIsFreedBeforeTheNewLoad) {
    g_app.magnificationModule = FakeModule();
    g_magnification.modulesHeld = 1;
    InitMagnification();
    EXPECT_THAT(g_calls,
                ElementsAre("free", "load Magnification.dll", "find MagInitialize", "find MagUninitialize",
                            "find MagSetFullscreenColorEffect", "MagInitialize"));
    EXPECT_EQ(g_magnification.modulesHeld, 1);
}

TEST_F(MagnificationLoad, AMissingLibraryIsShownWithItsErrorAndNothingElseIsTried) {
    g_magnification.loadError = ERROR_MOD_NOT_FOUND;
    InitMagnification();
    EXPECT_THAT(
        g_calls,
        ElementsAre("load Magnification.dll",
                    "box owner=0 flags=16 [Ambrel] Failed to load Magnification.dll\nError code: 126"));
    ExpectNothingLoaded();
    ExpectEntryPointsCleared();
}

TEST_F(MagnificationLoad, ErrorCodesAreShownAsSignedNumbers) {
    g_magnification.loadError = 0xFFFFFFFF;
    InitMagnification();
    ASSERT_EQ(g_calls.size(), 2U);
    EXPECT_EQ(g_calls[1], "box owner=0 flags=16 [Ambrel] Failed to load Magnification.dll\nError code: -1");

    g_calls.clear();
    g_magnification = FakeMagnification{};
    g_magnification.initializeError = 0x80070005;
    InitMagnification();
    ASSERT_EQ(g_calls.size(), 7U);
    EXPECT_EQ(g_calls[5], "box owner=0 flags=48 [Ambrel] MagInitialize failed.\nError code: -2147024891");
}

TEST_F(MagnificationLoad, WithoutMagInitializeTheModuleIsFreedAgain) {
    g_magnification.hasInitialize = false;
    ExpectMissingFunctionReported();
}

TEST_F(MagnificationLoad, WithoutMagUninitializeTheModuleIsFreedAgain) {
    g_magnification.hasUninitialize = false;
    ExpectMissingFunctionReported();
}

TEST_F(MagnificationLoad, WithoutTheMatrixCallTheModuleIsFreedAgain) {
    g_magnification.hasSetEffect = false;
    ExpectMissingFunctionReported();
    // Each result is stored as it was returned.
    EXPECT_NE(g_app.magInitialize, nullptr);
    EXPECT_NE(g_app.magUninitialize, nullptr);
    EXPECT_EQ(g_app.magSetFullscreenColorEffect, nullptr);
}

TEST_F(MagnificationLoad, WithoutAnyFunctionOneBoxIsShown) {
    g_magnification.hasInitialize = g_magnification.hasUninitialize = g_magnification.hasSetEffect = false;
    ExpectMissingFunctionReported();
    ExpectEntryPointsCleared();
}

TEST_F(MagnificationLoad, AFailedInitialisationIsAWarningWithItsOwnErrorAndFreesTheModule) {
    g_magnification.initializeError = ERROR_ACCESS_DENIED;
    InitMagnification();
    EXPECT_THAT(g_calls,
                ElementsAre("load Magnification.dll", "find MagInitialize", "find MagUninitialize",
                            "find MagSetFullscreenColorEffect", "MagInitialize",
                            "box owner=0 flags=48 [Ambrel] MagInitialize failed.\nError code: 5", "free"));
    ExpectNothingLoaded();
    // The entry points stay set, but nothing calls them.
    EXPECT_NE(g_app.magInitialize, nullptr);
    EXPECT_NE(g_app.magUninitialize, nullptr);
    EXPECT_NE(g_app.magSetFullscreenColorEffect, nullptr);

    g_calls.clear();
    SetIdentityMatrix();
    ShutdownMagnification();
    EXPECT_THAT(g_calls, IsEmpty());
    ExpectEntryPointsCleared();
}

TEST_F(MagnificationLoad, AfterAFailureALaterLoadMaySucceed) {
    g_magnification.initializeError = ERROR_NOT_READY;
    InitMagnification();
    g_magnification.initializeError = 0;
    InitMagnification();
    EXPECT_TRUE(IsMagnificationUsable());
    EXPECT_EQ(g_magnification.modulesHeld, 1);
}

// A message box dispatches messages: while it is open, the user can switch Legacy Mode off again from the
// tray menu.
TEST_F(MagnificationLoad, ALoadThatSucceedsWhileTheFailureBoxIsOpenIsNotUnloadedAfterwards) {
    g_magnification.initializeError = ERROR_NOT_READY;
    g_magnification.duringBox = [] {
        g_magnification.initializeError = 0;
        InitMagnification();
    };
    InitMagnification();
    EXPECT_TRUE(g_app.magnificationReady);
    EXPECT_EQ(g_app.magnificationModule, FakeModule());
    EXPECT_EQ(g_magnification.modulesHeld, 1);
}

TEST_F(MagnificationLoad, ALoadThatFailsWhileTheFailureBoxIsOpenFreesEachModuleOnce) {
    g_magnification.initializeError = ERROR_NOT_READY;
    g_magnification.duringBox = [] { InitMagnification(); };
    InitMagnification();
    ExpectNothingLoaded();
}

TEST_F(MagnificationLoad, AFailureBoxThatIsOpenDoesNotOpenASecondTime) {
    const auto boxes = [] {
        return std::count_if(g_calls.begin(), g_calls.end(),
                             [](const std::string& call) { return call.rfind("box ", 0) == 0; });
    };
    void (*const failures[])() = {
        [] { g_magnification.loadError = ERROR_MOD_NOT_FOUND; },
        [] { g_magnification.hasSetEffect = false; },
        [] { g_magnification.initializeError = ERROR_NOT_READY; },
    };
    for (void (*const letFail)() : failures) {
        g_magnification = FakeMagnification{};
        g_calls.clear();
        letFail();
        g_magnification.duringBox = [] { InitMagnification(); };
        InitMagnification();
        EXPECT_EQ(boxes(), 1);
        EXPECT_EQ(g_magnification.modulesHeld, 0);
        InitMagnification();
        EXPECT_EQ(boxes(), 2) << "once it was closed it opens again";
    }
}

TEST_F(MagnificationLoad, ALoadThatSucceedsWhileTheMissingFunctionBoxIsOpenIsNotUnloadedAfterwards) {
    g_magnification.hasSetEffect = false;
    g_magnification.duringBox = [] {
        g_magnification.hasSetEffect = true;
        InitMagnification();
    };
    InitMagnification();
    EXPECT_TRUE(g_app.magnificationReady);
    EXPECT_EQ(g_app.magnificationModule, FakeModule());
    EXPECT_EQ(g_magnification.modulesHeld, 1);
}

TEST_F(MagnificationLoad, ShuttingDownSetsTheIdentityMatrixUninitialisesAndFrees) {
    InstallFakeMagnification();
    ShutdownMagnification();
    EXPECT_THAT(g_calls, ElementsAre("identity matrix", "MagUninitialize", "free"));
    ExpectNothingLoaded();
    ExpectEntryPointsCleared();
}

TEST_F(MagnificationLoad, ShuttingDownInLegacyModeDoesTheSame) {
    InstallFakeMagnification();
    g_app.useLegacyGamma = true;
    ShutdownMagnification();
    EXPECT_THAT(g_calls, ElementsAre("identity matrix", "MagUninitialize", "free"));
}

TEST_F(MagnificationLoad, ShuttingDownTwiceDoesNothingTheSecondTime) {
    InstallFakeMagnification();
    ShutdownMagnification();
    g_calls.clear();
    ShutdownMagnification();
    EXPECT_THAT(g_calls, IsEmpty());
}

TEST_F(MagnificationLoad, ShuttingDownWithNothingLoadedCallsNothing) {
    ShutdownMagnification();
    EXPECT_THAT(g_calls, IsEmpty());
}

TEST_F(MagnificationLoad, ShuttingDownContinuesWhenTheIdentityMatrixIsRefused) {
    InstallFakeMagnification();
    g_magnification.laterEffectErrors = ERROR_INVALID_PARAMETER;
    ShutdownMagnification();
    EXPECT_THAT(g_calls, ElementsAre("identity matrix", "MagUninitialize", "free"));
    EXPECT_EQ(g_app.consecutiveError87, 0);
    ExpectNothingLoaded();
}

TEST_F(MagnificationLoad, ShuttingDownWithoutTheMatrixCallOnlyUninitialisesAndFrees) {
    InstallFakeMagnification();
    g_app.magSetFullscreenColorEffect = nullptr;
    ShutdownMagnification();
    EXPECT_THAT(g_calls, ElementsAre("MagUninitialize", "free"));
    ExpectNothingLoaded();
    ExpectEntryPointsCleared();
}

TEST_F(MagnificationLoad, ShuttingDownWithoutMagUninitializeSetsTheIdentityMatrixAndFrees) {
    InstallFakeMagnification();
    g_app.magUninitialize = nullptr;
    ShutdownMagnification();
    EXPECT_THAT(g_calls, ElementsAre("identity matrix", "free"));
    ExpectNothingLoaded();
}

TEST_F(MagnificationLoad, ShuttingDownWithoutAModuleFreesNone) {
    InstallFakeMagnification();
    g_app.magnificationModule = nullptr;
    ShutdownMagnification();
    EXPECT_THAT(g_calls, ElementsAre("identity matrix", "MagUninitialize"));
    EXPECT_FALSE(g_app.magnificationReady);
    ExpectEntryPointsCleared();
}

TEST_F(MagnificationLoad, ShuttingDownUninitialisedOnlyFreesTheModule) {
    InstallFakeMagnification();
    g_app.magnificationReady = false;
    ShutdownMagnification();
    EXPECT_THAT(g_calls, ElementsAre("free"));
    ExpectNothingLoaded();
    ExpectEntryPointsCleared();
}
