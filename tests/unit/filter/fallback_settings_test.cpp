// The automatic fallback and the settings file: how a second run treats the settings of the first one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/fake_magnification.h"
#include "filter/fake_screen.h"
#include "filter/filter.h"
#include "filter/magnification.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/seam.h"

#include <shlobj.h>

AMBREL_USES_SEAMS(recorded_cursors);

AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {}

namespace {

using testing::Contains;
using testing::Not;

std::wstring g_folder;

HRESULT WINAPI FakeSHGetFolderPathW(HWND, int, HANDLE, DWORD, LPWSTR path) {
    wcscpy(path, g_folder.c_str());
    return S_OK;
}

BOOL WINAPI FakePostMessageW(HWND, UINT message, WPARAM, LPARAM) {
    Record("post ", message);
    return TRUE;
}

const std::string kNotice = "post 32872";  // WM_APP + 104

class FallbackSettings : public testing::Test {
protected:
    void SetUp() override {
        wchar_t temporary[MAX_PATH] = {};
        GetTempPathW(MAX_PATH, temporary);
        g_folder = std::wstring(temporary) + L"ambrel-fallback-" + std::to_wstring(GetCurrentProcessId());
        CreateDirectoryW(g_folder.c_str(), nullptr);
        Restart();
    }

    void TearDown() override {
        DeleteFileW((g_folder + L"\\Ambrel2\\settings.ini").c_str());
        RemoveDirectoryW((g_folder + L"\\Ambrel2").c_str());
        RemoveDirectoryW(g_folder.c_str());
    }

    // The start-up steps of the filter.
    static void Restart() {
        g_app = AppState{};
        g_magnification = FakeMagnification{};
        g_screen = FakeScreen{};
        g_calls.clear();
        g_app.mainWindow = MakeHandle<HWND>(0x1234);
        LoadSettings();
        InitMagnification();
        g_app.filterOn = true;
    }

    static void RefuseTwice() {
        g_magnification.effectErrors = {87, 87};
        ApplyFilter();
        ApplyFilter();
    }

    static UINT Stored(const wchar_t* key) {
        return GetPrivateProfileIntW(L"Settings", key, 99, g_app.settingsPath.c_str());
    }

    static void Store(const wchar_t* key, const wchar_t* value) {
        WritePrivateProfileStringW(L"Settings", key, value, g_app.settingsPath.c_str());
    }
};

}  // namespace

AMBREL_SEAM(SHGetFolderPathW, FakeSHGetFolderPathW);
AMBREL_SEAM(PostMessageW, FakePostMessageW);

TEST_F(FallbackSettings, OneError87SavesNothing) {
    g_magnification.effectErrors = {87};
    ApplyFilter();
    EXPECT_EQ(Stored(L"UseLegacyGamma"), 99U);
}

TEST_F(FallbackSettings, TheFallbackIsSavedImmediatelyWithItsFlag) {
    RefuseTwice();
    EXPECT_EQ(Stored(L"UseLegacyGamma"), 1U);
    EXPECT_EQ(Stored(L"LegacyModeAutoSet"), 1U);
    EXPECT_THAT(g_calls, Contains(kNotice));
}

TEST_F(FallbackSettings, TheNextRunStartsInLegacyModeWithoutLoadingTheApi) {
    RefuseTwice();
    Restart();
    EXPECT_TRUE(g_app.useLegacyGamma);
    EXPECT_TRUE(g_app.legacyModeAutoSet);
    EXPECT_THAT(g_calls, Not(Contains("load Magnification.dll")));
}

TEST_F(FallbackSettings, AFlagWithoutLegacyModeStartsTheModernPipelineAndSuppressesTheNotice) {
    Store(L"LegacyModeAutoSet", L"1");
    Store(L"UseLegacyGamma", L"0");
    Restart();
    EXPECT_FALSE(g_app.useLegacyGamma);
    EXPECT_TRUE(IsMagnificationUsable());
    RefuseTwice();
    EXPECT_TRUE(g_app.useLegacyGamma);
    EXPECT_EQ(Stored(L"UseLegacyGamma"), 1U);
    EXPECT_THAT(g_calls, Not(Contains(kNotice)));
}

TEST_F(FallbackSettings, AfterTheUserLeavesLegacyModeTheNextRunMayFallBackAndShowTheNotice) {
    RefuseTwice();
    ToggleLegacyMode();
    SaveSettings();
    EXPECT_EQ(Stored(L"UseLegacyGamma"), 0U);
    EXPECT_EQ(Stored(L"LegacyModeAutoSet"), 0U);
    // The fallback is suppressed for this run.
    RefuseTwice();
    EXPECT_FALSE(g_app.useLegacyGamma);

    Restart();
    EXPECT_FALSE(g_app.fallbackSuppressed);
    RefuseTwice();
    EXPECT_TRUE(g_app.useLegacyGamma);
    EXPECT_THAT(g_calls, Contains(kNotice));
}

TEST_F(FallbackSettings, TogglingAloneSavesNothing) {
    ToggleLegacyMode();
    EXPECT_EQ(Stored(L"UseLegacyGamma"), 99U);
}
