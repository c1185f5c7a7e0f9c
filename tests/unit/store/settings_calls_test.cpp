// The calls into Windows, with results that a real file cannot produce.
#include "store/settings_fixture.h"

namespace {

using settings_fixture::g_folderResult;
using settings_fixture::g_log;
using settings_fixture::kDefaults;
using settings_fixture::Loaded;

std::vector<std::wstring> g_calls;
std::wstring g_expectedPath;
BOOL g_writeSucceeds = TRUE;
UINT g_integer = 0;

BOOL WINAPI FakeCreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES security) {
    EXPECT_EQ(security, nullptr);
    g_calls.push_back(std::wstring(L"folder ") + path);
    SetLastError(ERROR_ALREADY_EXISTS);
    return FALSE;
}

UINT WINAPI FakeGetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, INT fallback, LPCWSTR path) {
    EXPECT_EQ(path, g_expectedPath);
    g_calls.push_back(std::wstring(L"int ") + section + L"/" + key + L" " + std::to_wstring(fallback));
    return g_integer;
}

DWORD WINAPI FakeGetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR fallback, LPWSTR buffer,
                                          DWORD size, LPCWSTR path) {
    EXPECT_EQ(path, g_expectedPath);
    g_calls.push_back(std::wstring(L"text ") + section + L"/" + key + L" " + fallback + L" " +
                      std::to_wstring(size));
    wcsncpy(buffer, fallback, size);
    return 1;
}

BOOL WINAPI FakeWritePrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR path) {
    EXPECT_EQ(path, g_expectedPath);
    g_calls.push_back(std::wstring(L"write ") + section + L"/" + key + L" " + value);
    if (!g_writeSucceeds) SetLastError(ERROR_DISK_FULL);
    return g_writeSucceeds;
}

const std::vector<std::wstring> kWrites = {
    L"write Filter/Intensity 385",      L"write Filter/Brightness 1000",
    L"write Settings/LaunchAtStart 0",  L"write Settings/AllowExtremeDim 0",
    L"write Settings/UseLegacyGamma 0", L"write Settings/LegacyModeAutoSet 0",
    L"write Settings/PWMSafeMode 0",    L"write Settings/GammaFixEpoch 0",
};

class SettingsCalls : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        settings_fixture::g_applicationData = L"C:\\Users\\Jos\u00e9\\AppData\\Roaming";
        g_expectedPath = L"C:\\Users\\Jos\u00e9\\AppData\\Roaming\\Ambrel2\\settings.ini";
        g_folderResult = S_OK;
        g_writeSucceeds = TRUE;
        g_integer = 0;
        g_calls.clear();
        g_log.clear();
    }
    void TearDown() override { g_app = AppState{}; }
};

}  // namespace

AMBREL_SEAM(CreateDirectoryW, FakeCreateDirectoryW);
AMBREL_SEAM(GetPrivateProfileIntW, FakeGetPrivateProfileIntW);
AMBREL_SEAM(GetPrivateProfileStringW, FakeGetPrivateProfileStringW);
AMBREL_SEAM(WritePrivateProfileStringW, FakeWritePrivateProfileStringW);

TEST_F(SettingsCalls, ALoadCreatesTheFolderAndReadsEveryKeyWithItsDefault) {
    LoadSettings();
    const std::vector<std::wstring> expected = {
        L"folder C:\\Users\\Jos\u00e9\\AppData\\Roaming\\Ambrel2\\",
        L"int Filter/Intensity 385",
        L"int Filter/Brightness 1000",
        L"int Settings/LaunchAtStart 0",
        L"int Settings/AllowExtremeDim 0",
        L"int Settings/UseLegacyGamma 0",
        L"int Settings/LegacyModeAutoSet 0",
        L"int Settings/PWMSafeMode 0",
        L"text Settings/GammaFixEpoch 0 512",
    };
    EXPECT_EQ(g_calls, expected);
}

TEST_F(SettingsCalls, TheLargestUnsignedNumberIsNotANegativeOne) {
    g_integer = 0xFFFFFFFFu;
    LoadSettings();
    EXPECT_EQ(g_app.intensity, 1.0);
    EXPECT_EQ(g_app.brightness, 1.0);
    g_integer = 0x80000000u;
    LoadSettings();
    EXPECT_EQ(g_app.intensity, 1.0);
    EXPECT_EQ(g_app.brightness, 1.0);
}

TEST_F(SettingsCalls, ASaveWritesEveryKeyInOrderAndNothingElse) {
    g_app.settingsPath = g_expectedPath;
    SaveSettings();
    EXPECT_EQ(g_calls, kWrites);
    EXPECT_EQ(g_log, std::vector<std::wstring>{L"Saved settings"});
}

TEST_F(SettingsCalls, OnAFullDiskEveryKeyIsStillTriedAndTheSaveIsLogged) {
    g_app.settingsPath = g_expectedPath;
    g_writeSucceeds = FALSE;
    SaveSettings();
    EXPECT_EQ(g_calls, kWrites);
    EXPECT_EQ(g_log, std::vector<std::wstring>{L"Saved settings"});
}

TEST_F(SettingsCalls, WithoutAnApplicationDataFolderALoadDoesNothingAtAll) {
    g_folderResult = E_FAIL;
    LoadSettings();
    EXPECT_EQ(g_app.settingsPath, L"");
    EXPECT_EQ(GetSettingsPath(), L"");
    EXPECT_EQ(Loaded(), kDefaults);
    EXPECT_TRUE(g_calls.empty());
    EXPECT_TRUE(g_log.empty());
}

// S_FALSE is a success code and means that there is no such folder.
TEST_F(SettingsCalls, AFolderThatIsReportedAsMissingGivesNoPath) {
    g_folderResult = S_FALSE;
    LoadSettings();
    EXPECT_EQ(g_app.settingsPath, L"");
    EXPECT_TRUE(g_calls.empty());
    EXPECT_TRUE(g_log.empty());
}

TEST_F(SettingsCalls, WithoutAnApplicationDataFolderASaveDoesNothingAtAll) {
    g_folderResult = HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
    LoadSettings();
    g_app.intensity = 0.9;
    SaveSettings();
    EXPECT_TRUE(g_calls.empty());
    EXPECT_TRUE(g_log.empty());
}

TEST_F(SettingsCalls, ASaveWithoutALoadDoesNothing) {
    SaveSettings();
    EXPECT_TRUE(g_calls.empty());
    EXPECT_TRUE(g_log.empty());
}

TEST_F(SettingsCalls, ASaveUsesThePathThatTheLoadStored) {
    LoadSettings();
    settings_fixture::g_applicationData = L"D:\\Elsewhere";
    g_calls.clear();
    SaveSettings();
    EXPECT_EQ(g_calls.size(), 8u);  // each checks its path
}

TEST_F(SettingsCalls, TheLongestApplicationDataPathIsNotTruncated) {
    const std::wstring longest = L"C:\\" + std::wstring(256, L'p');
    settings_fixture::g_applicationData = longest;
    EXPECT_EQ(GetSettingsPath(), longest + L"\\Ambrel2\\settings.ini");
}
