// What the shipped code allocates with operator new, the allocator of all its C++ objects, on the paths that
// run again and again: a drag step, a timer, a poll and a paint. The window, GDI and the cursors are real;
// the monitors are not. WMI is not connected, so the strings that a query passes to COM are not counted, and
// neither is the block that the support report puts on the clipboard.
#include <gtest/gtest.h>

#include <cstring>

#include "app/state/app_state.h"
#include "app/state/timers.h"
#include "app/window_proc.h"
#include "brightness/monitor_functions.h"
#include "filter/counted_allocations.h"
#include "support/seam.h"
#include "ui/accessible_events.h"
#include "ui/fonts.h"

#include <highlevelmonitorconfigurationapi.h>
#include <physicalmonitorenumerationapi.h>

namespace {

constexpr int kCursorSize = 32;
constexpr int kWarmthX = 80;
constexpr int kPressY = 200;
constexpr COLORREF kHeaderColour = RGB(0x19, 0x19, 0x19);

int g_matrices = 0;
int g_cursorsSet = 0;
int g_ramps = 0;
int g_rampsRead = 0;
int g_announcements = 0;
std::uint16_t g_ramp[3][256];
int g_tips = 0;
bool g_acceptsTips = true;
DWORD g_monitorCount = 0;
int g_monitorsRead = 0;

BOOL WINAPI AcceptMatrix(tagMAGCOLOREFFECT*) {
    g_matrices += 1;
    return TRUE;
}

BOOL WINAPI TakeSystemCursor(HCURSOR cursor, DWORD) {
    g_cursorsSet += 1;
    return DestroyCursor(cursor);
}

BOOL WINAPI AcceptRamp(HDC, LPVOID ramp) {
    g_ramps += 1;
    std::memcpy(g_ramp, ramp, sizeof(g_ramp));
    return TRUE;
}

BOOL WINAPI ReadAcceptedRamp(HDC, LPVOID ramp) {
    g_rampsRead += 1;
    std::memcpy(ramp, g_ramp, sizeof(g_ramp));
    return TRUE;
}

void WINAPI CountAnnouncement(DWORD, HWND, LONG, LONG) {
    g_announcements += 1;
}

BOOL WINAPI AcceptTip(DWORD, NOTIFYICONDATAW*) {
    g_tips += 1;
    return g_acceptsTips ? TRUE : FALSE;
}

BOOL WINAPI CountMonitors(HMONITOR, DWORD* found) {
    *found = g_monitorCount;
    return TRUE;
}

BOOL WINAPI OpenMonitors(HMONITOR, DWORD, PHYSICAL_MONITOR*) {
    return TRUE;
}

BOOL WINAPI CloseMonitors(DWORD, PHYSICAL_MONITOR*) {
    return TRUE;
}

BOOL WINAPI ReportCapabilities(HANDLE, DWORD* capabilities, DWORD*) {
    *capabilities = MC_CAPS_BRIGHTNESS;
    return TRUE;
}

BOOL WINAPI ReportFullBrightness(HANDLE, DWORD* minimum, DWORD* current, DWORD* maximum) {
    g_monitorsRead += 1;
    *minimum = 0;
    *current = *maximum = 100;
    return TRUE;
}

BOOL WINAPI SetNothing(HANDLE, DWORD) {
    return TRUE;
}

HCURSOR CreateColourCursor() {
    ICONINFO info = {};
    HDC screen = GetDC(nullptr);
    info.hbmColor = CreateCompatibleBitmap(screen, kCursorSize, kCursorSize);
    ReleaseDC(nullptr, screen);
    info.hbmMask = CreateBitmap(kCursorSize, kCursorSize, 1, 1, nullptr);
    HCURSOR cursor = static_cast<HCURSOR>(CreateIconIndirect(&info));
    DeleteObject(info.hbmColor);
    DeleteObject(info.hbmMask);
    return cursor;
}

struct Counts {
    int allocations;
    int frees;
};

class Allocations : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_matrices = g_cursorsSet = g_ramps = g_rampsRead = g_tips = g_monitorsRead = 0;
        g_monitorCount = 0;
        g_acceptsTips = true;
        g_app.instance = GetModuleHandleW(nullptr);
        g_app.mainWindow = CreateWindowExW(WS_EX_TOPMOST, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, 320,
                                           540, nullptr, nullptr, nullptr, nullptr);
        ASSERT_NE(g_app.mainWindow, nullptr);
        CreateFonts();
        g_app.filterOn = true;
        g_app.magnificationReady = true;
        g_app.magSetFullscreenColorEffect = &AcceptMatrix;
        g_app.rampApplied = true;
        for (HCURSOR& cursor : g_app.baseCursors)
            cursor = CreateColourCursor();
        g_app.baseCursorsLoaded = true;
        AnnouncePopup(true);
    }

    void TearDown() override {
        for (HCURSOR cursor : g_app.baseCursors)
            DestroyCursor(cursor);
        DeleteFonts();
        DestroyWindow(g_app.mainWindow);
        g_app = AppState{};
        g_monitorFunctions = MonitorFunctions{};
    }

    // The allocations of the program while it handles a message.
    static Counts Handling(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        const Counts before = {AllocationsSoFar(), FreesSoFar()};
        HandleWindowMessage(g_app.mainWindow, message, wParam, lParam);
        return {AllocationsSoFar() - before.allocations, FreesSoFar() - before.frees};
    }

    static int AllocationsOfTimer(TimerId timer) {
        return Handling(WM_TIMER, static_cast<WPARAM>(timer)).allocations;
    }

    static int AllocationsOfMoveTo(int y) {
        return Handling(WM_MOUSEMOVE, 0, MAKELPARAM(kWarmthX, y)).allocations;
    }

    static int AllocationsOfPaint() {
        InvalidateRect(g_app.mainWindow, nullptr, FALSE);
        return Handling(WM_PAINT).allocations;
    }

    static COLORREF PixelOfWindow(int x, int y) {
        HDC dc = GetDC(g_app.mainWindow);
        const COLORREF colour = GetPixel(dc, x, y);
        ReleaseDC(g_app.mainWindow, dc);
        return colour;
    }

    static void StartDrag() {
        g_app.dragSlider = Slider::Warmth;
        g_app.dragStartY = kPressY;
        g_app.dragStartValue = 0.3;
    }

    static void ConnectMonitors(DWORD count) {
        g_monitorCount = count;
        g_monitorFunctions = {g_app.instance,      &CountMonitors,        &OpenMonitors, &CloseMonitors,
                              &ReportCapabilities, &ReportFullBrightness, &SetNothing};
    }

    // The second poll: the first logs that the number of displays has changed.
    static Counts PollWithoutChange() {
        Handling(WM_TIMER, static_cast<WPARAM>(TimerId::PwmSafePoll));
        g_monitorsRead = 0;
        return Handling(WM_TIMER, static_cast<WPARAM>(TimerId::PwmSafePoll));
    }
};

}  // namespace

AMBREL_SEAM(SetSystemCursor, TakeSystemCursor);
AMBREL_SEAM(SetDeviceGammaRamp, AcceptRamp);
AMBREL_SEAM(GetDeviceGammaRamp, ReadAcceptedRamp);
AMBREL_SEAM(NotifyWinEvent, CountAnnouncement);
AMBREL_SEAM(Shell_NotifyIconW, AcceptTip);

TEST_F(Allocations, TheCounterDetectsThem) {
    const int before = AllocationsSoFar();
    const int freesBefore = FreesSoFar();
    int* volatile number = new int(1);
    EXPECT_EQ(AllocationsSoFar(), before + 1);
    delete number;
    EXPECT_EQ(FreesSoFar(), freesBefore + 1);
}

TEST_F(Allocations, ADragStepThatTintsTheCursorsMakesNone) {
    StartDrag();
    for (const bool legacy : {false, true}) {
        g_app.useLegacyGamma = legacy;
        g_cursorsSet = g_tips = 0;
        EXPECT_EQ(AllocationsOfMoveTo(legacy ? 150 : 180), 0);
        EXPECT_EQ(g_cursorsSet, kSystemCursorCount);
        EXPECT_EQ(g_tips, 1);
    }
    EXPECT_EQ(g_matrices, 1);
    EXPECT_EQ(g_ramps, 1);
    EXPECT_EQ(g_rampsRead, 1);
    EXPECT_TRUE(g_app.useLegacyGamma) << "the ramp that was read back is the one that was written";
}

TEST_F(Allocations, APaintOfEitherPanelMakesNone) {
    for (const Panel panel : {Panel::Main, Panel::Settings}) {
        g_app.panel = panel;
        EXPECT_EQ(AllocationsOfPaint(), 0);
        EXPECT_EQ(PixelOfWindow(5, 5), kHeaderColour);
    }
}

TEST_F(Allocations, APaintThatAnnouncesAChangeMakesNone) {
    AllocationsOfPaint();
    g_app.intensity = 0.9;
    g_app.pwmSafe = true;
    g_announcements = 0;
    EXPECT_EQ(AllocationsOfPaint(), 0);
    EXPECT_GE(g_announcements, 2);
}

TEST_F(Allocations, ATimerThatFindsNothingToDoMakesNone) {
    g_app.popupShown = true;
    EXPECT_EQ(AllocationsOfTimer(TimerId::PopupAutoHide), 0);
    EXPECT_TRUE(g_app.popupShown);
    EXPECT_EQ(AllocationsOfTimer(TimerId::CopiedIndicationEnd), 0);
    g_app.gammaFixDeadline = ~std::uint64_t{0};
    EXPECT_EQ(AllocationsOfTimer(TimerId::GammaFixPoll), 0);
    g_acceptsTips = false;
    EXPECT_EQ(AllocationsOfTimer(TimerId::TrayRetry), 0);
    EXPECT_EQ(g_app.trayRetryCount, 1);
}

TEST_F(Allocations, ASettledDisplayChangeMakesNone) {
    ConnectMonitors(0);
    AllocationsOfTimer(TimerId::DisplaySettle);
    g_matrices = g_tips = 0;
    EXPECT_EQ(AllocationsOfTimer(TimerId::DisplaySettle), 0);
    EXPECT_EQ(g_matrices, 1);
    EXPECT_EQ(g_tips, 1);
}

// The log keeps each line until five hundred later ones have replaced it.
TEST_F(Allocations, ASaveMakesOneForItsLineOfTheLog) {
    g_app.settingsPath = L"C:\\windows\\temp\\allocations.ini";
    EXPECT_EQ(AllocationsOfTimer(TimerId::SaveSettings), 1);
}

TEST_F(Allocations, APollWithoutMonitorsMakesNone) {
    ConnectMonitors(0);
    EXPECT_EQ(PollWithoutChange().allocations, 0);
}

// The first logs that the lock is pending.
TEST_F(Allocations, AVerificationThatStillFindsNoMonitorMakesNone) {
    ConnectMonitors(0);
    g_app.pwmSafe = true;
    AllocationsOfTimer(TimerId::PwmSafeVerify);
    g_app.pwmVerifyPending = true;
    EXPECT_EQ(AllocationsOfTimer(TimerId::PwmSafeVerify), 0);
    EXPECT_FALSE(g_app.pwmVerifyPending);
}

TEST_F(Allocations, AVerificationThatConfirmsTheLockKeepsOneForItsLineOfTheLog) {
    ConnectMonitors(4);
    g_app.pwmSafe = true;
    Handling(WM_TIMER, static_cast<WPARAM>(TimerId::PwmSafeVerify));
    g_app.pwmVerifyPending = true;
    g_app.pwmLockConfirmed = false;
    g_monitorsRead = 0;
    const Counts counts = Handling(WM_TIMER, static_cast<WPARAM>(TimerId::PwmSafeVerify));
    EXPECT_TRUE(g_app.pwmLockConfirmed);
    EXPECT_EQ(g_monitorsRead, 4);
    EXPECT_EQ(counts.allocations, counts.frees + 1);
}

// They are the array of handles, the list of targets and their names.
TEST_F(Allocations, APollOfMonitorsFreesAllThatItMakes) {
    for (const DWORD monitors : {1U, 4U, 16U}) {
        ConnectMonitors(monitors);
        const Counts counts = PollWithoutChange();
        EXPECT_EQ(g_monitorsRead, static_cast<int>(monitors));
        EXPECT_EQ(g_app.pwmTargetsAt100, static_cast<int>(monitors));
        EXPECT_EQ(counts.allocations, counts.frees);
        EXPECT_LE(counts.allocations, 4 * static_cast<int>(monitors) + 3);
    }
}
