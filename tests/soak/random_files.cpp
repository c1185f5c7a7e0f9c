// Random settings.ini and events.log.
#include <cstdio>
#include <cwchar>
#include <iterator>

#include "app/startup.h"
#include "app/state/app_state.h"
#include "app/state/messages.h"
#include "diag/support_bundle.h"
#include "faults/session.h"
#include "faults/simulated_platform.h"
#include "soak/attack.h"
#include "soak/outside_text.h"
#include "soak/properties.h"
#include "store/event_log.h"
#include "store/settings.h"

namespace {

constexpr std::size_t kMaxTailLines = 40;

const char* const kSections[] = {"Filter", "Settings", "Restore", "filter", "Other", ""};
const char* const kKeys[] = {"Intensity",
                             "Brightness",
                             "LaunchAtStart",
                             "AllowExtremeDim",
                             "UseLegacyGamma",
                             "LegacyModeAutoSet",
                             "PWMSafeMode",
                             "GammaFixEpoch",
                             "Ramp",
                             "1",
                             "2",
                             "99999",
                             "intensity",
                             "Unknown",
                             ""};
const char* const kValues[] = {"0",
                               "1",
                               "385",
                               "1000",
                               "1001",
                               "-1",
                               "99999999999999999999",
                               "0x",
                               "0x1F",
                               "1.5",
                               "yes",
                               "\"500\"",
                               "4294967296",
                               "2147483648",
                               "",
                               " 700",
                               "700;",
                               "40 0 DXVA2:\\\\.\\DISPLAY1#0 path",
                               "40|0|name|path"};

void WriteBytes(const std::wstring& path, const std::string& bytes) {
    CreateDirectoryW(ProgramFolder().c_str(), nullptr);
    std::FILE* file = _wfopen(path.c_str(), L"wb");
    Require(file != nullptr, "the file cannot be written");
    if (file == nullptr) return;
    std::fwrite(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
}

std::string AnyBytes(Dice& dice, unsigned longest) {
    std::string bytes(dice.Below(longest + 1), '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(dice.Any());
    return bytes;
}

std::string AnyValue(Dice& dice) {
    switch (dice.Below(4)) {
        case 0: return std::to_string(static_cast<long long>(dice.Any()));
        case 1: return std::to_string(dice.Below(2000));
        case 2: return dice.OneIn(50) ? std::string(70000, '7') : AnyBytes(dice, 30);
        default: return kValues[dice.Below(std::size(kValues))];
    }
}

std::string AnyLine(Dice& dice) {
    switch (dice.Below(12)) {
        case 0: return AnyBytes(dice, 100);
        case 1: return "";
        case 2: return std::string("[") + kSections[dice.Below(std::size(kSections))];
        case 3: return ";" + AnyValue(dice);
        case 4:
        case 5:
        case 6: return std::string("[") + kSections[dice.Below(std::size(kSections))] + "]";
        default:
            return std::string(kKeys[dice.Below(std::size(kKeys))]) + (dice.OneIn(10) ? " = " : "=") +
                   AnyValue(dice);
    }
}

std::string AnySettings(Dice& dice) {
    if (dice.OneIn(20)) return AnyBytes(dice, 5000);
    std::string text = dice.OneIn(20) ? "\xEF\xBB\xBF" : "";
    const char* end = dice.OneIn(5) ? "\n" : "\r\n";
    for (unsigned lines = dice.Below(40); lines > 0; --lines)
        text += AnyLine(dice) + end;
    if (dice.OneIn(30)) text.resize(dice.Below(static_cast<unsigned>(text.size() + 1)));
    return text;
}

std::string Escaped(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes) {
        char code[8];
        std::snprintf(code, sizeof(code), byte >= 0x20 && byte < 0x7F ? "%c" : "\\x%02X",
                      static_cast<unsigned char>(byte));
        text += code;
    }
    return text;
}

struct Settings {
    double intensity, brightness;
    bool launchAtStart, allowExtremeDim, useLegacyGamma, legacyModeAutoSet, pwmSafe;
    std::uint64_t gammaFixEpoch;

    bool operator==(const Settings&) const = default;
};

Settings CurrentSettings() {
    return {g_app.intensity,      g_app.brightness,        g_app.launchAtStart, g_app.allowExtremeDim,
            g_app.useLegacyGamma, g_app.legacyModeAutoSet, g_app.pwmSafe,       g_app.gammaFixEpoch};
}

// Whether Windows reads the file as one of Unicode text: it begins with that mark.
bool IsUnicode(const std::string& bytes) {
    return bytes.rfind("\xFF\xFE", 0) == 0 || bytes.rfind("\xFE\xFF", 0) == 0;
}

void LoadSaveAndLoad(Dice& dice, const std::string& bytes) {
    g_app = AppState{};
    LoadSettings();
    RequireValuesInRange();
    const Settings loaded = CurrentSettings();
    SaveSettings();
    g_app = AppState{};
    LoadSettings();
    if (!IsUnicode(bytes)) Require(CurrentSettings() == loaded, "the settings change in a save and a load");
    // Values of a session are not whole thousandths.
    g_app.intensity = dice.Below(1000001) / 1000000.0;
    g_app.brightness = dice.Between(g_app.allowExtremeDim ? 0 : 100000, 1000000) / 1000000.0;
    const Settings changed = CurrentSettings();
    SaveSettings();
    LoadSettings();
    Require(changed.intensity - g_app.intensity >= -1e-9 && changed.intensity - g_app.intensity < 0.00101 &&
                changed.brightness - g_app.brightness >= -1e-9 &&
                changed.brightness - g_app.brightness < 0.00101,
            "a value changes by a thousandth or more in a save and a load");
}

std::string g_settings;

void WriteSettingsAndStart() {
    Require(g_app.mainWindow != nullptr, "the program does not start");
    RequireConsistentState();
}

void TestSettings(Dice& dice, int number) {
    const std::wstring path = ProgramFolder() + L"settings.ini";
    g_settings = AnySettings(dice);
    RecordStep("settings.ini: " + Escaped(g_settings.substr(0, 2000)));
    WriteBytes(path, g_settings);
    if (number % 20 == 0) {
        RunSessionWith(WriteSettingsAndStart);
        return;
    }
    LoadSaveAndLoad(dice, g_settings);
}

std::string AnyLog(Dice& dice) {
    std::string text;
    const unsigned kind = dice.Below(6);
    const unsigned longest = dice.OneIn(6) ? 900000 : 20000;
    if (kind == 0) return AnyBytes(dice, longest);
    if (kind == 1) return std::string(dice.Below(longest), static_cast<char>(dice.Any()));
    while (text.size() < longest) {
        text += kind == 2 ? AnyBytes(dice, 200)
                          : "[12:00:00.000] \xE2\x80\x94 line " + std::to_string(dice.Any());
        text += dice.OneIn(10) ? "\n" : "\r\n";
        if (dice.OneIn(100)) break;
    }
    if (dice.OneIn(5)) text.resize(dice.Below(static_cast<unsigned>(text.size() + 1)));
    return text;
}

void TestLog(Dice& dice, int number) {
    const std::wstring path = ProgramFolder() + L"events.log";
    const std::string bytes = AnyLog(dice);
    RecordStep("events.log of " + std::to_string(bytes.size()) + " bytes");
    WriteBytes(path, bytes);
    OpenEventLogFile(path);
    LogEvent("line %d of the attack", number);
    const std::vector<std::wstring> tail = ReadLogTail();
    Require(!tail.empty() && tail.size() <= kMaxTailLines,
            std::to_string(tail.size()) + " lines in the tail");
    if (Failed()) return;
    const std::wstring expected = L"line " + std::to_wstring(number) + L" of the attack";
    Require(tail.back().ends_with(expected), "the last line is not the one logged last");
    for (const std::wstring& line : tail)
        Require(!HasControlCharacter(line), "a control character in the tail");
    if (number % 10 == 0) RequireReportLines(BuildSupportBundle());
    WIN32_FILE_ATTRIBUTE_DATA file = {};
    GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &file);
    const DWORD size = file.nFileSizeLow;
    // Above 256 KiB it is cut to 64 KiB; then the ring of 500 lines is appended.
    Require(size < 262144 + 500 * 600, "events.log has " + std::to_string(size) + " bytes");
}

}  // namespace

void AttackSettings() {
    for (int i = 0; i < g_round->steps && !Failed(); ++i)
        TestSettings(g_round->dice, i);
    CleanUpSession();
}

void AttackLog() {
    PrepareSession({});
    g_app.settingsPath = GetSettingsPath();
    for (int i = 0; i < g_round->steps && !Failed(); ++i)
        TestLog(g_round->dice, i);
    OpenEventLogFile(L"");
    CleanUpSession();
}
