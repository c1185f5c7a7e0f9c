// One step of a slider drag, from the mouse message to the screen, through the program's real files: it calls
// Windows for what it must and for nothing else, and it allocates nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "app/app_state.h"
#include "counted_allocations.h"
#include "filter/filter.h"
#include "import_counter.h"
#include "support/seam.h"
#include "ui/popup_input.h"

#include <magnification.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

HWND const kWindow = reinterpret_cast<HWND>(0x1234);
HDC const kContext = reinterpret_cast<HDC>(0xDC);
constexpr int kMostSteps = 64;

// The record of this test must not allocate either.
const char* g_steps[kMostSteps];
int g_stepCount = 0;

struct Platform {
    bool acceptsRamps = true;
    bool readsBackRight = true;
    DWORD matrixError = 0;
    unsigned char ramp[1536] = {};
};
Platform g_platform;

void Step(const char* name) {
    if (g_stepCount < kMostSteps) g_steps[g_stepCount++] = name;
}

using CallRecord = std::vector<std::string>;

CallRecord Steps() {
    return {g_steps, g_steps + g_stepCount};
}

BOOL WINAPI FakeSetEffect(MAGCOLOREFFECT*) {
    Step("matrix");
    if (g_platform.matrixError == 0) return TRUE;
    SetLastError(g_platform.matrixError);
    return FALSE;
}

HDC WINAPI FakeGetDC(HWND) {
    Step("get dc");
    return kContext;
}

int WINAPI FakeReleaseDC(HWND, HDC) {
    Step("release dc");
    return 1;
}

BOOL WINAPI FakeSetDeviceGammaRamp(HDC, LPVOID ramp) {
    Step("set ramp");
    for (std::size_t i = 0; i < sizeof(g_platform.ramp); ++i)
        g_platform.ramp[i] = static_cast<const unsigned char*>(ramp)[i];
    return g_platform.acceptsRamps ? TRUE : FALSE;
}

BOOL WINAPI FakeGetDeviceGammaRamp(HDC, LPVOID ramp) {
    Step("read ramp");
    for (std::size_t i = 0; i < sizeof(g_platform.ramp); ++i) {
        const unsigned char wrong = 0xFF;
        static_cast<unsigned char*>(ramp)[i] = g_platform.readsBackRight ? g_platform.ramp[i] : wrong;
    }
    return TRUE;
}

BOOL WINAPI FakeInvalidateRect(HWND window, const RECT* area, BOOL erase) {
    Step(window == kWindow && area == nullptr && erase == FALSE ? "invalidate" : "invalidate otherwise");
    return TRUE;
}

HICON WINAPI FakeLoadIconW(HINSTANCE, LPCWSTR name) {
    // 103 is the icon of the filter that is on.
    Step(name == MAKEINTRESOURCEW(103) ? "load icon on" : "load icon off");
    return reinterpret_cast<HICON>(0x1C0);
}

BOOL WINAPI FakeShellNotifyIconW(DWORD message, NOTIFYICONDATAW*) {
    Step(message == NIM_MODIFY ? "modify tray icon" : "other tray call");
    return TRUE;
}

HWND WINAPI FakeSetCapture(HWND) {
    Step("capture");
    return nullptr;
}

BOOL WINAPI FakeReleaseCapture() {
    Step("release capture");
    return TRUE;
}

UINT_PTR WINAPI FakeSetTimer(HWND, UINT_PTR id, UINT period, TIMERPROC) {
    Step(id == 1 && period == 500 ? "set timer 1 500" : "set another timer");
    return id;
}

BOOL WINAPI FakeKillTimer(HWND, UINT_PTR id) {
    Step(id == 1 ? "kill timer 1" : "kill another timer");
    return TRUE;
}

BOOL WINAPI FakePostMessageW(HWND, UINT, WPARAM, LPARAM) {
    Step("post");
    return TRUE;
}

BOOL WINAPI FakeWritePrivateProfileStringW(LPCWSTR, LPCWSTR, LPCWSTR, LPCWSTR) {
    Step("write settings");
    return TRUE;
}

int WINAPI FakeMessageBoxW(HWND, LPCWSTR, LPCWSTR, UINT) {
    Step("box");
    return IDOK;
}

constexpr int kWarmthX = 80;
constexpr int kBrightnessX = 240;
constexpr int kPressY = 200;

class DragStep : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_platform = Platform{};
        ForgetSteps();
        g_app.mainWindow = kWindow;
        g_app.settingsPath = L"C:\\settings.ini";
        g_app.filterOn = true;
        g_app.intensity = 0.5;
        g_app.magnificationReady = true;
        g_app.magSetFullscreenColorEffect = &FakeSetEffect;
    }

    void Press(int x) {
        OnMouseDown(x, kPressY);
        ForgetSteps();
    }

    void ForgetSteps() { g_stepCount = 0; }

    // Moves the pressed mouse and counts what that costs.
    void MoveTo(int y) {
        ForgetSteps();
        const int before = AllocationsSoFar();
        counter_.Start();
        OnMouseMove(kWarmthX, y);
        counter_.Stop();
        EXPECT_EQ(AllocationsSoFar(), before);
        ExpectNoOtherCalls();
    }

    // Beyond the recorded calls there is one coordinate to scale. The rest is what the compiler and the
    // formatter may take from the C runtime, none of which asks the system for anything.
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

    ImportCounter counter_;
};

}  // namespace

AMBREL_SEAM(GetDC, FakeGetDC);
AMBREL_SEAM(ReleaseDC, FakeReleaseDC);
AMBREL_SEAM(SetDeviceGammaRamp, FakeSetDeviceGammaRamp);
AMBREL_SEAM(GetDeviceGammaRamp, FakeGetDeviceGammaRamp);
AMBREL_SEAM(InvalidateRect, FakeInvalidateRect);
AMBREL_SEAM(LoadIconW, FakeLoadIconW);
AMBREL_SEAM(Shell_NotifyIconW, FakeShellNotifyIconW);
AMBREL_SEAM(SetCapture, FakeSetCapture);
AMBREL_SEAM(ReleaseCapture, FakeReleaseCapture);
AMBREL_SEAM(SetTimer, FakeSetTimer);
AMBREL_SEAM(KillTimer, FakeKillTimer);
AMBREL_SEAM(PostMessageW, FakePostMessageW);
AMBREL_SEAM(MessageBoxW, FakeMessageBoxW);
AMBREL_SEAM(WritePrivateProfileStringW, FakeWritePrivateProfileStringW);

TEST_F(DragStep, TheCounterSeesAnyCallAndAnyAllocation) {
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

TEST_F(DragStep, InMagnificationModeSetsOneMatrixAndRefreshesOnce) {
    Press(kWarmthX);
    for (const int y : {199, 150, 120, 260}) {
        MoveTo(y);
        EXPECT_EQ(Steps(), Refreshed({"matrix"}));
        EXPECT_DOUBLE_EQ(g_app.intensity, 0.5 + (200 - y) / 198.0);
    }
}

TEST_F(DragStep, InLegacyModeSetsAndReadsOneRampOnOneContextAndRefreshesOnce) {
    g_app.useLegacyGamma = true;
    Press(kWarmthX);
    for (const int y : {199, 150, 120, 260}) {
        MoveTo(y);
        EXPECT_EQ(Steps(), Refreshed({"get dc", "set ramp", "read ramp", "release dc"}));
    }
}

TEST_F(DragStep, OfTheBrightnessCostsTheSame) {
    g_app.brightness = 0.6;
    Press(kBrightnessX);
    MoveTo(210);
    EXPECT_EQ(Steps(), Refreshed({"matrix"}));
    EXPECT_DOUBLE_EQ(g_app.brightness, 0.6 - 10 / 198.0);
    EXPECT_EQ(g_app.intensity, 0.5);
    g_app.useLegacyGamma = true;
    MoveTo(220);
    EXPECT_EQ(Steps(), Refreshed({"get dc", "set ramp", "read ramp", "release dc"}));
}

TEST_F(DragStep, AtTheEndOfTheTravelCostsTheSame) {
    Press(kWarmthX);
    for (const int y : {-500, -501, 900}) {
        MoveTo(y);
        EXPECT_EQ(Steps(), Refreshed({"matrix"}));
        EXPECT_EQ(g_app.intensity, y < 0 ? 1.0 : 0.0);
    }
}

TEST_F(DragStep, WithAReadBackThatIsForgivenCostsTheSame) {
    g_app.useLegacyGamma = true;
    g_platform.readsBackRight = false;
    Press(kWarmthX);
    for (const int y : {199, 198}) {
        MoveTo(y);
        EXPECT_EQ(Steps(), Refreshed({"get dc", "set ramp", "read ramp", "release dc"}));
    }
    EXPECT_EQ(g_app.readBackMismatchStreak, 2);
}

TEST_F(DragStep, WithRampsThatGoOnBeingRefusedLogsAndAllocatesNothing) {
    g_app.useLegacyGamma = true;
    g_app.lastApplyRejected = true;
    g_platform.acceptsRamps = false;
    Press(kWarmthX);
    for (const int y : {199, 150, 120}) {
        MoveTo(y);
        EXPECT_EQ(Steps(), Refreshed({"get dc", "set ramp", "release dc"}));
    }
    EXPECT_EQ(g_app.rampsRejected, 3);
}

TEST_F(DragStep, WithTheFilterOffSetsTheIdentityOfThePipelineInUse) {
    g_app.filterOn = false;
    Press(kWarmthX);
    MoveTo(190);
    EXPECT_THAT(Steps(), ElementsAre("matrix", "invalidate", "load icon off", "modify tray icon"));
    g_app.useLegacyGamma = true;
    MoveTo(180);
    EXPECT_THAT(Steps(), ElementsAre("get dc", "set ramp", "release dc", "invalidate", "load icon off",
                                     "modify tray icon"));
}

TEST_F(DragStep, WithoutAnyPipelineOnlyRefreshes) {
    g_app.magnificationReady = false;
    Press(kWarmthX);
    MoveTo(190);
    EXPECT_EQ(Steps(), Refreshed({}));
}

TEST_F(DragStep, ApplyingAloneCallsNothingButThePipeline) {
    const int before = AllocationsSoFar();
    counter_.Start();
    ApplyFilter();
    g_app.useLegacyGamma = true;
    ApplyFilter();
    g_app.filterOn = false;
    ApplyFilter();
    counter_.Stop();
    EXPECT_EQ(AllocationsSoFar(), before);
    EXPECT_THAT(Steps(), ElementsAre("matrix", "get dc", "set ramp", "read ramp", "release dc", "get dc",
                                     "set ramp", "release dc"));
    auto calls = counter_.Calls();
    for (const char* harmless : {"memset", "memcpy", "memmove"})
        calls.erase(harmless);
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(DragStep, AMouseThatDragsNothingCallsNothing) {
    counter_.Start();
    OnMouseMove(kWarmthX, 150);
    counter_.Stop();
    EXPECT_THAT(Steps(), IsEmpty());
    EXPECT_THAT(counter_.Calls(), IsEmpty());
    EXPECT_EQ(g_app.intensity, 0.5);
}

TEST_F(DragStep, SavesNothingAndArmsNoTimerUntilTheButtonIsReleased) {
    OnMouseDown(kWarmthX, kPressY);
    EXPECT_THAT(Steps(), ElementsAre("capture"));
    for (int y = 195; y > 185; --y)
        MoveTo(y);
    ForgetSteps();
    OnMouseUp();
    EXPECT_THAT(Steps(), ElementsAre("release capture", "kill timer 1", "set timer 1 500"));
}

TEST_F(DragStep, TheFirstRefusedRampRefreshesForTheBannerAndForTheStep) {
    g_app.useLegacyGamma = true;
    g_platform.acceptsRamps = false;
    Press(kWarmthX);
    OnMouseMove(kWarmthX, 190);
    EXPECT_EQ(Steps(), Refreshed(Refreshed({"get dc", "set ramp", "release dc"})));
}

TEST_F(DragStep, WithoutAWindowARefusedRampIsCountedAndNothingIsRefreshed) {
    g_app.mainWindow = nullptr;
    g_app.useLegacyGamma = true;
    g_platform.acceptsRamps = false;
    ApplyFilter();
    EXPECT_THAT(Steps(), ElementsAre("get dc", "set ramp", "release dc"));
    EXPECT_TRUE(g_app.lastApplyRejected);
}

TEST_F(DragStep, TheSecondError87OfADragSavesAppliesTheRampRefreshesAndPosts) {
    g_platform.matrixError = 87;
    Press(kWarmthX);
    OnMouseMove(kWarmthX, 190);
    EXPECT_EQ(Steps(), Refreshed({"matrix"}));

    ForgetSteps();
    OnMouseMove(kWarmthX, 180);
    CallRecord expected = {"matrix"};
    expected.insert(expected.end(), 8, "write settings");
    expected.insert(expected.end(), {"get dc", "set ramp", "read ramp", "release dc"});
    expected = Refreshed(expected);
    expected.push_back("post");
    EXPECT_EQ(Steps(), Refreshed(expected));
    EXPECT_EQ(g_app.dragSlider, Slider::Warmth);
}

TEST_F(DragStep, AFallbackWhoseRampIsRefusedTooShowsTheBannerBeforeItsOwnRefresh) {
    g_platform.matrixError = 87;
    g_platform.acceptsRamps = false;
    g_app.consecutiveError87 = 1;
    Press(kWarmthX);
    OnMouseMove(kWarmthX, 190);
    CallRecord expected = {"matrix"};
    expected.insert(expected.end(), 8, "write settings");
    expected.insert(expected.end(), {"get dc", "set ramp", "release dc"});
    expected = Refreshed(Refreshed(expected));
    expected.push_back("post");
    EXPECT_EQ(Steps(), Refreshed(expected));
    EXPECT_TRUE(g_app.useLegacyGamma);
    EXPECT_TRUE(g_app.lastApplyRejected);
}
