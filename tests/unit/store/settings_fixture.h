// Fixture for the tests of the settings: a private application-data folder and a record of the log lines.
// Including it installs its seams.
#pragma once

#include <gtest/gtest.h>

#include <cstdarg>
#include <string>
#include <vector>

#include "app/state/app_state.h"
#include "store/event_log.h"
#include "store/settings.h"
#include "store/temp_folder.h"
#include "support/seam.h"

#include <shlobj.h>

namespace settings_fixture {

inline std::wstring g_applicationData;
inline HRESULT g_folderResult = S_OK;
inline int g_folderCalls = 0;
inline std::vector<std::wstring> g_log;

inline HRESULT WINAPI FakeSHGetFolderPathW(HWND window, int csidl, HANDLE token, DWORD flags, LPWSTR path) {
    ++g_folderCalls;
    EXPECT_EQ(window, nullptr);
    EXPECT_EQ(csidl, 26);  // the roaming application data
    EXPECT_EQ(token, nullptr);
    EXPECT_EQ(flags, 0u);
    if (FAILED(g_folderResult)) return g_folderResult;
    wcsncpy(path, g_applicationData.c_str(), MAX_PATH);
    return g_folderResult;
}

// The persisted fields and filterOn in one comparable text.
inline std::string Loaded() {
    char text[256];
    snprintf(text, sizeof(text), "%.17g %.17g launch=%d dim=%d legacy=%d auto=%d pwm=%d epoch=%llu filter=%d",
             g_app.intensity, g_app.brightness, g_app.launchAtStart, g_app.allowExtremeDim,
             g_app.useLegacyGamma, g_app.legacyModeAutoSet, g_app.pwmSafe,
             static_cast<unsigned long long>(g_app.gammaFixEpoch), g_app.filterOn);
    return text;
}

inline const std::string kDefaults =
    "0.38500000000000001 1 launch=0 dim=0 legacy=0 auto=0 pwm=0 epoch=0 filter=0";

class SettingsTest : public testing::Test {
protected:
    TempFolder applicationData;
    std::wstring folder = applicationData.Child(L"Ambrel2");
    std::wstring path = folder + L"\\settings.ini";

    void SetUp() override {
        g_app = AppState{};
        g_applicationData = applicationData.path;
        g_folderResult = S_OK;
        g_folderCalls = 0;
        g_log.clear();
    }
    void TearDown() override { g_app = AppState{}; }

    // The file as an earlier run left it.
    void Stored(std::string_view bytes) const {
        CreateDirectoryW(folder.c_str(), nullptr);
        WriteBytes(path, bytes);
    }

    static void Reload() {
        g_app = AppState{};
        LoadSettings();
    }

    // The file's lines without blank ones.
    std::vector<std::string> FileLines() const {
        std::vector<std::string> lines;
        std::string line;
        for (const char c : ReadBytes(path) + "\n") {
            if (c == '\r') continue;
            if (c != '\n') {
                line += c;
            } else if (!line.empty()) {
                lines.push_back(line);
                line.clear();
            }
        }
        return lines;
    }
};

}  // namespace settings_fixture

// Replaces the event log.
AMBREL_REPLACE(void, LogFormatted, (const wchar_t* format, ...)) {
    wchar_t message[512];
    va_list arguments;
    va_start(arguments, format);
    FormatWideArguments(message, std::size(message), format, arguments);
    va_end(arguments);
    settings_fixture::g_log.push_back(message);
}

AMBREL_SEAM(SHGetFolderPathW, settings_fixture::FakeSHGetFolderPathW);
