// A change of DPI from the message to the window's new size.
#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "app/window_proc.h"
#include "support/call_record.h"
#include "support/seam.h"

namespace {

HWND const kWindow = MakeHandle<HWND>(500);
std::uintptr_t g_nextIcon = 0;

HANDLE WINAPI FakeLoadImage(HINSTANCE, const wchar_t* name, UINT, int width, int height, UINT) {
    Record("load icon ", ValueOf(name), " ", width, "x", height);
    return MakeHandle<HANDLE>(g_nextIcon++);
}

BOOL WINAPI FakeDestroyIcon(HICON icon) {
    Record("destroy icon ", ValueOf(icon));
    return TRUE;
}

BOOL WINAPI FakeSetWindowPos(HWND window, HWND, int x, int y, int width, int height, UINT flags) {
    Record("move ", ValueOf(window), " to ", x, " ", y, " size ", width, "x", height, " flags ", flags);
    return TRUE;
}

BOOL WINAPI FakeInvalidateRect(HWND window, const RECT* area, BOOL) {
    Record("invalidate ", ValueOf(window), area == nullptr ? "" : " part");
    return TRUE;
}

class DpiChanged : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_app.headerIcon = MakeHandle<HICON>(70);
        g_app.scaledResourcesBuilt = true;
        g_nextIcon = 71;
        g_calls.clear();
    }

    // The size of the suggested rectangle is wrong on purpose: only its corner is used.
    static LRESULT Change(WPARAM dpi) {
        const RECT suggested = {-1950, 40, -1000, 41};
        return MainWindowProc(kWindow, WM_DPICHANGED, dpi, reinterpret_cast<LPARAM>(&suggested));
    }
};

}  // namespace

AMBREL_SEAM(LoadImageW, FakeLoadImage);
AMBREL_SEAM(DestroyIcon, FakeDestroyIcon);
AMBREL_SEAM(SetWindowPos, FakeSetWindowPos);
AMBREL_SEAM(InvalidateRect, FakeInvalidateRect);

TEST_F(DpiChanged, TheNewDpiIsStoredAndTheWindowMovedAndScaled) {
    EXPECT_EQ(Change(MAKEWPARAM(144, 144)), 0);
    EXPECT_EQ(g_app.dpi, 144U);
    // The flags are SWP_NOZORDER and SWP_NOACTIVATE.
    EXPECT_EQ(g_calls, (CallRecord{"load icon 103 33x33", "destroy icon 70",
                                   "move 500 to -1950 40 size 480x810 flags 20", "invalidate 500"}));
}

TEST_F(DpiChanged, ADpiInTheLowWordAloneIsUsed) {
    Change(120);
    EXPECT_EQ(g_app.dpi, 120U);
    EXPECT_EQ(g_calls, (CallRecord{"load icon 103 28x28", "destroy icon 70",
                                   "move 500 to -1950 40 size 400x675 flags 20", "invalidate 500"}));
}

TEST_F(DpiChanged, TheSameDpiRebuildsNothingButMovesTheWindow) {
    Change(MAKEWPARAM(96, 96));
    EXPECT_EQ(g_calls, (CallRecord{"move 500 to -1950 40 size 320x540 flags 20", "invalidate 500"}));
}

TEST_F(DpiChanged, ADpiOfZeroIsTreatedAs96) {
    g_app.dpi = 192;
    Change(0);
    EXPECT_EQ(g_app.dpi, 96U);
    EXPECT_EQ(g_calls, (CallRecord{"load icon 103 22x22", "destroy icon 70",
                                   "move 500 to -1950 40 size 320x540 flags 20", "invalidate 500"}));
}

TEST_F(DpiChanged, EachChangeDestroysThePreviousIcon) {
    Change(MAKEWPARAM(192, 192));
    Change(MAKEWPARAM(96, 96));
    EXPECT_EQ(g_calls, (CallRecord{"load icon 103 44x44", "destroy icon 70",
                                   "move 500 to -1950 40 size 640x1080 flags 20", "invalidate 500",
                                   "load icon 103 22x22", "destroy icon 71",
                                   "move 500 to -1950 40 size 320x540 flags 20", "invalidate 500"}));
}

TEST_F(DpiChanged, ARectangleThatCannotBeReadLeavesTheWindowWhereItIs) {
    for (const LPARAM wild : {LPARAM{0}, LPARAM{1}, LPARAM{0x7FFF0000}, LPARAM{-1}}) {
        g_calls.clear();
        EXPECT_EQ(MainWindowProc(kWindow, WM_DPICHANGED, MAKEWPARAM(96, 96), wild), 0);
        EXPECT_EQ(g_calls, (CallRecord{"invalidate 500"})) << wild;
    }
}

TEST_F(DpiChanged, AnAbsurdDpiIsIgnored) {
    for (const UINT dpi : {961U, 65535U})
        Change(MAKEWPARAM(dpi, dpi));
    EXPECT_EQ(g_app.dpi, 96U);
    EXPECT_TRUE(g_calls.empty());
    Change(MAKEWPARAM(960, 960));
    EXPECT_EQ(g_app.dpi, 960U);
}

TEST_F(DpiChanged, ADragContinuesAcrossADpiChange) {
    g_app.dragSlider = Slider::Warmth;
    g_app.dragStartY = 200;
    Change(MAKEWPARAM(144, 144));
    EXPECT_EQ(g_app.dragSlider, Slider::Warmth);
    EXPECT_EQ(g_app.dragStartY, 200);
}
