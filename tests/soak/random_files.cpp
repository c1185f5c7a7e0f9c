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

std::string AnyBytes(RandomSource& random, unsigned longest) {
    std::string bytes(random.Below(longest + 1), '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random.Any());
    return bytes;
}

std::string AnyValue(RandomSource& random) {
    switch (random.Below(4)) {
        case 0: return std::to_string(static_cast<long long>(random.Any()));
        case 1: return std::to_string(random.Below(2000));
        case 2: return random.OneIn(50) ? std::string(70000, '7') : AnyBytes(random, 30);
        default: return kValues[random.Below(std::size(kValues))];
    }
}

std::string AnyLine(RandomSource& random) {
    switch (random.Below(12)) {
        case 0: return AnyBytes(random, 100);
        case 1: return "";
        case 2: return std::string("[") + kSections[random.Below(std::size(kSections))];
        case 3: return ";" + AnyValue(random);
        case 4:
        case 5:
        case 6: return std::string("[") + kSections[random.Below(std::size(kSections))] + "]";
        default:
            return std::string(kKeys[random.Below(std::size(kKeys))]) + (random.OneIn(10) ? " = " : "=") +
                   AnyValue(random);
    }
}

std::string AnySettings(RandomSource& random) {
    if (random.OneIn(20)) return AnyBytes(random, 5000);
    std::string text = random.OneIn(20) ? "\xEF\xBB\xBF" : "";
    const char* end = random.OneIn(5) ? "\n" : "\r\n";
    for (unsigned lines = random.Below(40); lines > 0; --lines)
        text += AnyLine(random) + end;
    if (random.OneIn(30)) text.resize(random.Below(static_cast<unsigned>(text.size() + 1)));
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

void LoadSaveAndLoad(RandomSource& random, const std::string& bytes) {
    g_app = AppState{};
    LoadSettings();
    RequireValuesInRange();
    const Settings loaded = CurrentSettings();
    SaveSettings();
    g_app = AppState{};
    LoadSettings();
    if (!IsUnicode(bytes)) Require(CurrentSettings() == loaded, "the settings change in a save and a load");
    // Values of a session are not whole thousandths.
    g_app.intensity = random.Below(1000001) / 1000000.0;
    g_app.brightness = random.Between(g_app.allowExtremeDim ? 0 : 100000, 1000000) / 1000000.0;
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

void TestSettings(RandomSource& random, int number) {
    const std::wstring path = ProgramFolder() + L"settings.ini";
    g_settings = AnySettings(random);
    RecordStep("settings.ini: " + Escaped(g_settings.substr(0, 2000)));
    WriteBytes(path, g_settings);
    if (number % 20 == 0) {
        RunSessionWith(WriteSettingsAndStart);
        return;
    }
    LoadSaveAndLoad(random, g_settings);
}

std::string AnyLog(RandomSource& random) {
    std::string text;
    const unsigned kind = random.Below(6);
    const unsigned longest = random.OneIn(6) ? 900000 : 20000;
    if (kind == 0) return AnyBytes(random, longest);
    if (kind == 1) return std::string(random.Below(longest), static_cast<char>(random.Any()));
    while (text.size() < longest) {
        text += kind == 2 ? AnyBytes(random, 200)
                          : "[12:00:00.000] \xE2\x80\x94 line " + std::to_string(random.Any());
        text += random.OneIn(10) ? "\n" : "\r\n";
        if (random.OneIn(100)) break;
    }
    if (random.OneIn(5)) text.resize(random.Below(static_cast<unsigned>(text.size() + 1)));
    return text;
}

void TestLog(RandomSource& random, int number) {
    const std::wstring path = ProgramFolder() + L"events.log";
    const std::string bytes = AnyLog(random);
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
        TestSettings(g_round->random, i);
    CleanUpSession();
}

void AttackLog() {
    PrepareSession({});
    g_app.settingsPath = GetSettingsPath();
    for (int i = 0; i < g_round->steps && !Failed(); ++i)
        TestLog(g_round->random, i);
    OpenEventLogFile(L"");
    CleanUpSession();
}
