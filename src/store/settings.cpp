#include "store/settings.h"

#include <algorithm>
#include <cwchar>

#include "app/state/app_state.h"
#include "filter/model/warmth.h"
#include "store/event_log.h"

#include <shlobj.h>

namespace {

constexpr wchar_t kFolder[] = L"\\Ambrel2\\";
constexpr wchar_t kFileName[] = L"settings.ini";

constexpr wchar_t kFilterSection[] = L"Filter";
constexpr wchar_t kSettingsSection[] = L"Settings";
constexpr wchar_t kEpochKey[] = L"GammaFixEpoch";

// Values from 0 to 1, stored in thousandths.
struct PerMilleRow {
    const wchar_t* key;
    int fallback;
    double AppState::*field;
};

constexpr PerMilleRow kPerMilles[] = {
    {L"Intensity", 385, &AppState::intensity},
    {L"Brightness", 1000, &AppState::brightness},
};

struct FlagRow {
    const wchar_t* key;
    bool AppState::*field;
};

constexpr FlagRow kFlags[] = {
    {L"LaunchAtStart", &AppState::launchAtStart},   {L"AllowExtremeDim", &AppState::allowExtremeDim},
    {L"UseLegacyGamma", &AppState::useLegacyGamma}, {L"LegacyModeAutoSet", &AppState::legacyModeAutoSet},
    {L"PWMSafeMode", &AppState::pwmSafe},
};

std::uint64_t ReadEpoch(const wchar_t* path) {
    wchar_t text[512] = {};
    GetPrivateProfileStringW(kSettingsSection, kEpochKey, L"0", text, 512, path);
    // wcstoull accepts a sign; an epoch has none.
    if (text[0] < L'0' || text[0] > L'9') return 0;
    return std::wcstoull(text, nullptr, 10);
}

void Write(const wchar_t* section, const wchar_t* key, const wchar_t* value) {
    WritePrivateProfileStringW(section, key, value, g_app.settingsPath.c_str());
}

}  // namespace

std::wstring GetSettingsPath() {
    wchar_t applicationData[MAX_PATH] = {};
    // S_FALSE is a success code that leaves the path empty.
    if (SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, 0, applicationData) != S_OK) return {};
    const std::wstring folder = std::wstring(applicationData) + kFolder;
    CreateDirectoryW(folder.c_str(), nullptr);
    return folder + kFileName;
}

void LoadSettings() {
    g_app.settingsPath = GetSettingsPath();
    if (g_app.settingsPath.empty()) return;
    const wchar_t* path = g_app.settingsPath.c_str();

    for (const PerMilleRow& row : kPerMilles) {
        // Unsigned: a negative value wraps to a large one and is clamped to the upper limit below.
        g_app.*row.field = GetPrivateProfileIntW(kFilterSection, row.key, row.fallback, path) / 1000.0;
    }
    for (const FlagRow& row : kFlags) {
        g_app.*row.field = GetPrivateProfileIntW(kSettingsSection, row.key, 0, path) != 0;
    }
    g_app.gammaFixEpoch = ReadEpoch(path);

    g_app.intensity = std::clamp(g_app.intensity, 0.0, 1.0);
    g_app.brightness = ClampBrightness(g_app.brightness, g_app.allowExtremeDim);
    g_app.filterOn = false;

    LogEvent("Loaded settings: intensity=%.3f brightness=%.3f extremeDim=%d legacy=%d pwmSafe=%d",
             g_app.intensity, g_app.brightness, g_app.allowExtremeDim, g_app.useLegacyGamma, g_app.pwmSafe);
}

void SaveSettings() {
    if (g_app.settingsPath.empty()) return;

    wchar_t text[32];
    for (const PerMilleRow& row : kPerMilles) {
        FormatText(text, "%d", static_cast<int>(g_app.*row.field * 1000.0));
        Write(kFilterSection, row.key, text);
    }
    for (const FlagRow& row : kFlags)
        Write(kSettingsSection, row.key, g_app.*row.field ? L"1" : L"0");
    FormatText(text, "%llu", static_cast<unsigned long long>(g_app.gammaFixEpoch));
    Write(kSettingsSection, kEpochKey, text);

    LogEvent("Saved settings");
}
