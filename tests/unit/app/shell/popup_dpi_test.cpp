#include "app/shell/popup_dpi.h"

#include <gtest/gtest.h>

#include "app/state/app_state.h"
#include "support/call_record.h"
#include "support/fake_libraries.h"
#include "support/seam.h"

#include <shellscalingapi.h>

namespace {

HWND const kMainWindow = MakeHandle<HWND>(500);
HWND const kOtherWindow = MakeHandle<HWND>(600);
HMONITOR const kMonitor = MakeHandle<HMONITOR>(31);
HICON const kOldIcon = MakeHandle<HICON>(70);
HICON const kNewIcon = MakeHandle<HICON>(71);

UINT g_mainWindowDpi = 0;
UINT g_otherWindowDpi = 0;
UINT g_monitorDpi = 0;
HRESULT g_monitorAnswer = S_OK;
bool g_iconLoads = true;

HANDLE WINAPI FakeLoadImage(HINSTANCE instance, const wchar_t* name, UINT type, int width, int height,
                            UINT flags) {
    EXPECT_EQ(instance, g_app.instance);
    EXPECT_EQ(type, static_cast<UINT>(IMAGE_ICON));
    EXPECT_EQ(flags & LR_SHARED, 0U) << "a shared icon must not be destroyed";
    Record("load icon ", ValueOf(name), " ", width, "x", height);
    return g_iconLoads ? kNewIcon : nullptr;
}

BOOL WINAPI FakeDestroyIcon(HICON icon) {
    Record("destroy icon ", ValueOf(icon), " with ", ValueOf(g_app.headerIcon), " in place");
    return TRUE;
}

UINT WINAPI FakeGetDpiForWindow(HWND window) {
    EXPECT_NE(window, nullptr);
    Record("dpi of window ", ValueOf(window));
    return window == kMainWindow ? g_mainWindowDpi : g_otherWindowDpi;
}

HRESULT WINAPI FakeGetDpiForMonitor(HMONITOR monitor, MONITOR_DPI_TYPE type, UINT* x, UINT* y) {
    EXPECT_EQ(type, MDT_EFFECTIVE_DPI);
    Record("dpi of monitor ", ValueOf(monitor));
    *x = g_monitorDpi;
    *y = 300;
    return g_monitorAnswer;
}

class PopupDpi : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.instance = MakeHandle<HINSTANCE>(9);
        g_app.mainWindow = kMainWindow;
        g_app.headerIcon = kOldIcon;
        g_app.scaledResourcesBuilt = true;
        g_mainWindowDpi = 0;
        g_otherWindowDpi = 0;
        g_monitorDpi = 0;
        g_monitorAnswer = S_OK;
        g_iconLoads = true;
        RemoveLibraries();
        InstallLibrary(L"Shcore.dll", {{"GetDpiForMonitor", EntryPoint(&FakeGetDpiForMonitor)}});
        g_calls.clear();
    }
};

}  // namespace

AMBREL_SEAM(LoadImageW, FakeLoadImage);
AMBREL_SEAM(DestroyIcon, FakeDestroyIcon);
AMBREL_SEAM(GetDpiForWindow, FakeGetDpiForWindow);

TEST_F(PopupDpi, TheMonitorsHorizontalDpiIsTaken) {
    g_monitorDpi = 144;
    g_mainWindowDpi = 192;
    UpdateDpiForMonitor(kMainWindow, kMonitor);
    EXPECT_EQ(g_calls, (CallRecord{"load Shcore.dll", "dpi of monitor 31", "free Shcore.dll",
                                   "load icon 103 33x33", "destroy icon 70 with 71 in place"}));
    EXPECT_EQ(g_app.dpi, 144U);
}

TEST_F(PopupDpi, TheSameDpiRebuildsNothing) {
    g_monitorDpi = 96;
    UpdateDpiForMonitor(kMainWindow, kMonitor);
    EXPECT_EQ(g_calls, (CallRecord{"load Shcore.dll", "dpi of monitor 31", "free Shcore.dll"}));
    EXPECT_EQ(g_app.headerIcon, kOldIcon);
}

TEST_F(PopupDpi, TheSameDpiBuildsWhatWasNeverBuilt) {
    g_monitorDpi = 96;
    g_app.headerIcon = nullptr;
    g_app.scaledResourcesBuilt = false;
    UpdateDpiForMonitor(kMainWindow, kMonitor);
    EXPECT_EQ(g_calls,
              (CallRecord{"load Shcore.dll", "dpi of monitor 31", "free Shcore.dll", "load icon 103 22x22"}));
    EXPECT_TRUE(g_app.scaledResourcesBuilt);
}

TEST_F(PopupDpi, WithoutShcoreTheMainWindowsDpiIsTaken) {
    RemoveLibraries();
    g_mainWindowDpi = 120;
    g_otherWindowDpi = 192;
    UpdateDpiForMonitor(kOtherWindow, kMonitor);
    EXPECT_EQ(g_calls, (CallRecord{"load Shcore.dll", "dpi of window 500", "load icon 103 28x28",
                                   "destroy icon 70 with 71 in place"}));
    EXPECT_EQ(g_app.dpi, 120U);
}

TEST_F(PopupDpi, WithoutTheFunctionTheMainWindowsDpiIsTaken) {
    RemoveLibraries();
    InstallLibrary(L"Shcore.dll", {});
    g_mainWindowDpi = 120;
    UpdateDpiForMonitor(kOtherWindow, kMonitor);
    EXPECT_EQ(g_calls, (CallRecord{"load Shcore.dll", "free Shcore.dll", "dpi of window 500",
                                   "load icon 103 28x28", "destroy icon 70 with 71 in place"}));
}

TEST_F(PopupDpi, WhenTheMonitorsDpiCannotBeReadTheMainWindowsDpiIsUsed) {
    g_monitorAnswer = E_INVALIDARG;
    g_monitorDpi = 144;
    g_mainWindowDpi = 192;
    UpdateDpiForMonitor(kOtherWindow, kMonitor);
    EXPECT_EQ(g_app.dpi, 192U);
    EXPECT_EQ(g_calls.back(), "destroy icon 70 with 71 in place");
}

TEST_F(PopupDpi, AMonitorDpiOfZeroIsIgnored) {
    g_monitorDpi = 0;
    g_mainWindowDpi = 144;
    UpdateDpiForMonitor(kOtherWindow, kMonitor);
    EXPECT_EQ(g_app.dpi, 144U);
}

TEST_F(PopupDpi, WithoutAMonitorDpiAndAMainWindowTheDpiIs96) {
    g_app.mainWindow = nullptr;
    g_app.dpi = 144;
    g_otherWindowDpi = 192;
    UpdateDpiForMonitor(kOtherWindow, kMonitor);
    EXPECT_EQ(g_app.dpi, 96U);
}

TEST_F(PopupDpi, WithoutAMonitorDpiAndWithAWindowDpiOfZeroTheDpiIs96) {
    g_app.dpi = 144;
    UpdateDpiForMonitor(kOtherWindow, kMonitor);
    EXPECT_EQ(g_app.dpi, 96U);
}

TEST_F(PopupDpi, WithoutAMonitorTheGivenWindowsDpiIsTaken) {
    g_otherWindowDpi = 144;
    g_mainWindowDpi = 192;
    UpdateDpiForMonitor(kOtherWindow, nullptr);
    EXPECT_EQ(g_calls,
              (CallRecord{"dpi of window 600", "load icon 103 33x33", "destroy icon 70 with 71 in place"}));
    EXPECT_EQ(g_app.dpi, 144U);
}

TEST_F(PopupDpi, WithoutAMonitorAWindowDpiOfZeroIsTreatedAs96) {
    g_app.dpi = 192;
    UpdateDpiForMonitor(kOtherWindow, nullptr);
    EXPECT_EQ(g_app.dpi, 96U);
    EXPECT_EQ(g_calls[1], "load icon 103 22x22");
}

TEST_F(PopupDpi, WithoutMonitorAndWindowTheDpiIs96RegardlessOfTheMainWindow) {
    g_app.dpi = 192;
    g_mainWindowDpi = 144;
    UpdateDpiForMonitor(nullptr, nullptr);
    EXPECT_EQ(g_app.dpi, 96U);
    EXPECT_EQ(g_calls, (CallRecord{"load icon 103 22x22", "destroy icon 70 with 71 in place"}));
}

TEST_F(PopupDpi, WithoutAMonitorTheSameDpiBuildsOnlyWhatWasNeverBuilt) {
    g_otherWindowDpi = 96;
    UpdateDpiForMonitor(kOtherWindow, nullptr);
    EXPECT_EQ(g_calls, (CallRecord{"dpi of window 600"}));
    g_app.scaledResourcesBuilt = false;
    UpdateDpiForMonitor(kOtherWindow, nullptr);
    EXPECT_EQ(g_calls[2], "load icon 103 22x22");
}
