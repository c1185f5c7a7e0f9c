#include "app/shell/tray_icon.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "app/window_lifetime.h"
#include "support/seam.h"

namespace {

struct ShellCall {
    DWORD message;
    NOTIFYICONDATAW data;
};

std::vector<ShellCall> g_shellCalls;
bool g_shellAccepts = true;

HINSTANCE const kInstance = reinterpret_cast<HINSTANCE>(9);
HWND const kWindow = reinterpret_cast<HWND>(500);

BOOL WINAPI FakeShellNotifyIcon(DWORD message, NOTIFYICONDATAW* data) {
    g_shellCalls.push_back({message, *data});
    return g_shellAccepts;
}

// Icon 102 is the handle 1020, icon 103 the handle 1030.
HICON WINAPI FakeLoadIcon(HINSTANCE instance, const wchar_t* name) {
    EXPECT_EQ(instance, kInstance);
    EXPECT_TRUE(IS_INTRESOURCE(name));
    return reinterpret_cast<HICON>(reinterpret_cast<ULONG_PTR>(name) * 10);
}

BOOL WINAPI FakeInvalidateRect(HWND, const RECT*, BOOL) {
    return TRUE;
}

HICON const kIconOff = reinterpret_cast<HICON>(1020);
HICON const kIconOn = reinterpret_cast<HICON>(1030);

class TrayIcon : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.instance = kInstance;
        g_app.mainWindow = kWindow;
        g_shellCalls.clear();
        g_shellAccepts = true;
    }

    static std::wstring TooltipFor(double intensity, double brightness) {
        g_app.filterOn = true;
        g_app.intensity = intensity;
        g_app.brightness = brightness;
        UpdateTrayIcon();
        return g_shellCalls.back().data.szTip;
    }
};

}  // namespace

AMBREL_SEAM(Shell_NotifyIconW, FakeShellNotifyIcon);
AMBREL_SEAM(LoadIconW, FakeLoadIcon);
AMBREL_SEAM(InvalidateRect, FakeInvalidateRect);

TEST_F(TrayIcon, IsAddedWithMessageIconAndTheProgramsName) {
    EXPECT_TRUE(AddTrayIcon());
    ASSERT_EQ(g_shellCalls.size(), 1U);
    const auto& [message, data] = g_shellCalls[0];
    EXPECT_EQ(message, NIM_ADD);
    EXPECT_EQ(data.cbSize, 976U);
    EXPECT_EQ(data.hWnd, kWindow);
    EXPECT_EQ(data.uID, 1U);
    EXPECT_EQ(data.uFlags, 7U);
    EXPECT_EQ(data.uCallbackMessage, 1025U);
    EXPECT_EQ(data.hIcon, kIconOff);
    EXPECT_STREQ(data.szTip, L"Ambrel");
}

TEST_F(TrayIcon, AddingWhileTheFilterIsOnShowsTheOnIconAndStillThePlainName) {
    g_app.filterOn = true;
    EXPECT_TRUE(AddTrayIcon());
    EXPECT_EQ(g_shellCalls[0].data.hIcon, kIconOn);
    EXPECT_STREQ(g_shellCalls[0].data.szTip, L"Ambrel");
}

TEST_F(TrayIcon, ARefusedAddIsReported) {
    g_shellAccepts = false;
    EXPECT_FALSE(AddTrayIcon());
}

TEST_F(TrayIcon, AnUpdateChangesIconAndTooltipOnly) {
    AddTrayIcon();
    UpdateTrayIcon();
    ASSERT_EQ(g_shellCalls.size(), 2U);
    const auto& [message, data] = g_shellCalls[1];
    EXPECT_EQ(message, NIM_MODIFY);
    EXPECT_EQ(data.cbSize, 976U);
    EXPECT_EQ(data.hWnd, kWindow);
    EXPECT_EQ(data.uID, 1U);
    EXPECT_EQ(data.uFlags, 6U);
    EXPECT_EQ(data.hIcon, kIconOff);
    EXPECT_STREQ(data.szTip, L"Ambrel - OFF");
}

TEST_F(TrayIcon, TheOnIconIsShownWhileTheFilterIsOn) {
    g_app.filterOn = true;
    UpdateTrayIcon();
    EXPECT_EQ(g_shellCalls[0].data.hIcon, kIconOn);
    g_app.filterOn = false;
    UpdateTrayIcon();
    EXPECT_EQ(g_shellCalls[1].data.hIcon, kIconOff);
    EXPECT_STREQ(g_shellCalls[1].data.szTip, L"Ambrel - OFF");
}

TEST_F(TrayIcon, TheTooltipShowsTheDayPreset) {
    EXPECT_EQ(TooltipFor(0.3846153846153846, 1.0), L"Ambrel - ON (4000K, 100%)");
}

TEST_F(TrayIcon, TheTooltipShowsTheEveningAndTheNightPreset) {
    EXPECT_EQ(TooltipFor(1.0 - 2700.0 / 6500.0, 0.85), L"Ambrel - ON (2700K, 85%)");
    EXPECT_EQ(TooltipFor(1.0, 0.7), L"Ambrel - ON (0K, 70%)");
}

TEST_F(TrayIcon, IntensityZeroIs6500KelvinAndOutOfRangeValuesAreClamped) {
    EXPECT_EQ(TooltipFor(0.0, 1.0), L"Ambrel - ON (6500K, 100%)");
    EXPECT_EQ(TooltipFor(-0.5, 1.0), L"Ambrel - ON (6500K, 100%)");
    EXPECT_EQ(TooltipFor(1.5, 1.0), L"Ambrel - ON (0K, 100%)");
}

TEST_F(TrayIcon, ThePercentIsTruncated) {
    EXPECT_EQ(TooltipFor(0.0, 0.855), L"Ambrel - ON (6500K, 85%)");
    EXPECT_EQ(TooltipFor(0.0, 0.999), L"Ambrel - ON (6500K, 99%)");
    EXPECT_EQ(TooltipFor(0.0, 0.1), L"Ambrel - ON (6500K, 10%)");
    EXPECT_EQ(TooltipFor(0.0, 0.0), L"Ambrel - ON (6500K, 0%)");
}

TEST_F(TrayIcon, TheKelvinAreRoundedHalvesUp) {
    // An eighth of 6500 is 812.5 exactly.
    EXPECT_EQ(TooltipFor(0.5, 1.0), L"Ambrel - ON (3250K, 100%)");
    EXPECT_EQ(TooltipFor(0.875, 1.0), L"Ambrel - ON (813K, 100%)");
    EXPECT_EQ(TooltipFor(0.9999, 1.0), L"Ambrel - ON (1K, 100%)");
}

TEST_F(TrayIcon, ATooltipNeverExceeds127CharactersRegardlessOfTheState) {
    for (const double intensity : {-1.0e9, 0.0, 1.0e7}) {
        for (const double brightness : {-1.0e7, 0.0, 1.0e7}) {
            const std::wstring tooltip = TooltipFor(intensity, brightness);
            EXPECT_LE(tooltip.size(), 127U);
            EXPECT_EQ(tooltip.substr(0, 13), L"Ambrel - ON (");
            EXPECT_EQ(tooltip.back(), L')');
        }
    }
    EXPECT_EQ(sizeof(g_app.trayIconData.szTip), 128 * sizeof(wchar_t));
}

TEST_F(TrayIcon, AShorterTooltipContainsNothingOfALongerPreviousOne) {
    TooltipFor(0.3846153846153846, 1.0);
    g_app.filterOn = false;
    UpdateTrayIcon();
    EXPECT_STREQ(g_shellCalls.back().data.szTip, L"Ambrel - OFF");
    AddTrayIcon();
    EXPECT_STREQ(g_shellCalls.back().data.szTip, L"Ambrel");
}

TEST_F(TrayIcon, ARefusedUpdateIsIgnoredAndTheNextOneTriesAgain) {
    g_shellAccepts = false;
    g_app.trayIconAdded = true;
    UpdateTrayIcon();
    EXPECT_TRUE(g_app.trayIconAdded);
    UpdateTrayIcon();
    EXPECT_EQ(g_shellCalls.size(), 2U);
}

TEST_F(TrayIcon, TheUpdateBeforeTheFirstAddIsHarmless) {
    // The window is created and refreshed before the icon is added. The shell refuses that update.
    g_app.mainWindow = nullptr;
    g_shellAccepts = false;
    OnCreate(kWindow);
    ASSERT_EQ(g_shellCalls.size(), 1U);
    EXPECT_EQ(g_shellCalls[0].message, NIM_MODIFY);
    EXPECT_EQ(g_shellCalls[0].data.cbSize, 976U);
    EXPECT_EQ(g_shellCalls[0].data.hWnd, kWindow);
    EXPECT_FALSE(g_app.trayIconAdded);

    g_shellAccepts = true;
    EXPECT_TRUE(AddTrayIcon());
    EXPECT_EQ(g_shellCalls[1].message, NIM_ADD);
    EXPECT_EQ(g_shellCalls[1].data.uFlags, 7U);
    EXPECT_STREQ(g_shellCalls[1].data.szTip, L"Ambrel");
}

TEST_F(TrayIcon, RemovalIdentifiesTheSameIcon) {
    AddTrayIcon();
    RemoveTrayIcon();
    ASSERT_EQ(g_shellCalls.size(), 2U);
    EXPECT_EQ(g_shellCalls[1].message, NIM_DELETE);
    EXPECT_EQ(g_shellCalls[1].data.cbSize, 976U);
    EXPECT_EQ(g_shellCalls[1].data.hWnd, kWindow);
    EXPECT_EQ(g_shellCalls[1].data.uID, 1U);
}

TEST_F(TrayIcon, UsesTheOriginalInterfaceVersion) {
    AddTrayIcon();
    UpdateTrayIcon();
    RemoveTrayIcon();
    for (const ShellCall& call : g_shellCalls) {
        EXPECT_NE(call.message, NIM_SETVERSION);
        EXPECT_EQ(call.data.uFlags & NIF_SHOWTIP, 0U);
    }
}
