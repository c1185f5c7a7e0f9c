#include <gtest/gtest.h>

#include <iterator>

#include "app/startup_fakes.h"
#include "app/state/app_state.h"
#include "app/window_proc.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_log_file);

namespace {

class StartupWindow : public testing::Test {
protected:
    void SetUp() override { ResetSystem(); }
};

struct ExpectedFont {
    const wchar_t* face;
    LONG height;
    LONG weight;
    BYTE quality;
    BYTE pitchAndFamily;
};

constexpr BYTE kClearType = 5;
constexpr BYTE kAntialiased = 4;
constexpr BYTE kAnyPitch = 0;
constexpr BYTE kFixedModern = 49;

constexpr ExpectedFont kExpectedFonts[] = {
    {L"Segoe UI", 14, 900, kClearType, kAnyPitch},   {L"Segoe UI", 17, 900, kClearType, kAnyPitch},
    {L"Segoe UI", 12, 700, kClearType, kAnyPitch},   {L"Consolas", 12, 700, kClearType, kFixedModern},
    {L"Segoe UI", 13, 900, kClearType, kAnyPitch},   {L"Segoe UI", 12, 700, kAntialiased, kAnyPitch},
    {L"Segoe UI", 18, 900, kAntialiased, kAnyPitch}, {L"Segoe MDL2 Assets", 18, 400, kClearType, kAnyPitch},
};

}  // namespace

TEST_F(StartupWindow, TheClassHasItsNameIconCursorBrushAndProcedure) {
    Start();
    const WNDCLASSEXW& registered = g_system.windowClass;
    EXPECT_EQ(g_system.className, L"Ambrel2Class");
    EXPECT_EQ(registered.cbSize, 80U);
    EXPECT_EQ(registered.style, 3U);
    EXPECT_EQ(registered.lpfnWndProc, &MainWindowProc);
    EXPECT_EQ(registered.hInstance, kInstance);
    EXPECT_EQ(ValueOf(registered.hIcon), 1010U);
    EXPECT_EQ(ValueOf(registered.hCursor), 32513U);
    EXPECT_EQ(ValueOf(registered.hbrBackground), 700U);
    EXPECT_EQ(registered.lpszMenuName, nullptr);
    EXPECT_EQ(registered.cbClsExtra, 0);
    EXPECT_EQ(registered.cbWndExtra, 0);
}

TEST_F(StartupWindow, TheWindowIsATopmostToolWindowWithoutATaskbarButton) {
    Start();
    EXPECT_EQ(g_system.windowClassName, L"Ambrel2Class");
    EXPECT_EQ(g_system.windowTitle, L"Ambrel");
    EXPECT_EQ(g_system.windowStyle, 0x82000000U);
    EXPECT_EQ(g_system.windowExtendedStyle, 0x88U);
    EXPECT_EQ(g_system.windowX, CW_USEDEFAULT);
    EXPECT_EQ(g_system.windowY, CW_USEDEFAULT);
    EXPECT_EQ(g_system.windowParent, nullptr);
    EXPECT_EQ(g_system.windowMenu, nullptr);
    EXPECT_EQ(g_system.windowInstance, kInstance);
}

TEST_F(StartupWindow, TheEightFontsAreMadeAtTheirHeightsUnscaled) {
    g_system.windowDpi = 192;
    Start();
    ASSERT_EQ(g_system.fonts.size(), std::size(kExpectedFonts));
    for (std::size_t i = 0; i < std::size(kExpectedFonts); ++i) {
        const LOGFONTW& font = g_system.fonts[i];
        EXPECT_STREQ(font.lfFaceName, kExpectedFonts[i].face) << i;
        EXPECT_EQ(font.lfHeight, kExpectedFonts[i].height) << i;
        EXPECT_EQ(font.lfWeight, kExpectedFonts[i].weight) << i;
        EXPECT_EQ(font.lfQuality, kExpectedFonts[i].quality) << i;
        EXPECT_EQ(font.lfPitchAndFamily, kExpectedFonts[i].pitchAndFamily) << i;
        EXPECT_EQ(font.lfWidth, 0) << i;
        EXPECT_EQ(font.lfEscapement, 0) << i;
        EXPECT_EQ(font.lfOrientation, 0) << i;
        EXPECT_EQ(font.lfItalic | font.lfUnderline | font.lfStrikeOut, 0) << i;
        EXPECT_EQ(font.lfCharSet, 1) << i;
        EXPECT_EQ(font.lfOutPrecision, 0) << i;
        EXPECT_EQ(font.lfClipPrecision, 0) << i;
        EXPECT_EQ(ValueOf(g_app.fonts[i]), 801 + i) << i;
    }
}

TEST_F(StartupWindow, AClassThatCannotBeRegisteredIsReportedAndExitsWith1) {
    g_system.classRegistered = false;
    EXPECT_EQ(Start(), 1);
    EXPECT_EQ(CallsStarting("box"), (CallRecord{"box \"Failed to register window class\" \"Ambrel\" 16"}));
    EXPECT_EQ(g_calls.back(), "box \"Failed to register window class\" \"Ambrel\" 16");
    EXPECT_TRUE(CallsStarting("create window").empty());
    EXPECT_TRUE(CallsStarting("add tray icon").empty());
}

TEST_F(StartupWindow, AWindowThatCannotBeCreatedIsReportedAndExitsWith1) {
    g_system.windowCreated = false;
    EXPECT_EQ(Start(), 1);
    EXPECT_EQ(CallsStarting("box"), (CallRecord{"box \"Failed to create window\" \"Ambrel\" 16"}));
    EXPECT_TRUE(CallsStarting("add tray icon").empty());
    EXPECT_TRUE(CallsStarting("quit message").empty());
}

TEST_F(StartupWindow, AWindowThatAnInstallerDestroyedDuringItsCreationEndsTheProgramSilently) {
    g_system.windowCreated = false;
    g_system.windowDestroyed = true;
    EXPECT_EQ(Start(), 0);
    EXPECT_TRUE(CallsStarting("box").empty());
    EXPECT_TRUE(CallsStarting("add tray icon").empty());
}

TEST_F(StartupWindow, ARefusedTrayIconStartsTheRetryTimerAndTheProgramContinues) {
    g_system.trayAccepts = false;
    g_app.trayRetryCount = 5;
    EXPECT_EQ(Start(), 0);
    const CallRecord end(g_calls.end() - 6, g_calls.end());
    EXPECT_EQ(end, (CallRecord{"add tray icon",
                               "log: Tray icon add failed (taskbar not ready?) - retry timer armed",
                               "set timer 7 3000", "show window 500 0", "quit message", "co uninitialize"}));
    EXPECT_FALSE(g_app.trayIconAdded);
    EXPECT_EQ(g_app.trayRetryCount, 0);
}

TEST_F(StartupWindow, AnAddedIconStartsNoTimer) {
    Start();
    EXPECT_TRUE(CallsStarting("set timer").empty());
}
