#include "diag/support_text.h"

#include "app/state/program_names.h"
#include "filter/model/displayed_values.h"
#include "filter/model/warmth.h"
#include "res/version.h"
#include "win32/control_characters.h"
#include "win32/format_text.h"

namespace {

constexpr double kBytesPerGigabyte = 1073741824.0;

// For numbers and short fixed words only: the result is truncated at 159 characters. Append longer text
// directly.
#define Formatted(format, ...)                      \
    ([&] {                                          \
        wchar_t formatted[160];                     \
        FormatText(formatted, format, __VA_ARGS__); \
        return std::wstring(formatted);             \
    }())

const wchar_t* OnOff(bool on) {
    return on ? L"ON" : L"OFF";
}

const wchar_t* YesNo(bool yes) {
    return yes ? L"yes" : L"no";
}

std::wstring VersionText() {
    return L"" AMBREL_VERSION;
}

// Without control characters: values come from the registry, from displays and from files.
std::wstring Printable(std::wstring text) {
    ReplaceControlCharacters(text.data(), text.size());
    return text;
}

std::wstring OsName(const OsInfo& os) {
    return os.productName.empty() ? L"Windows" : Printable(os.productName);
}

void AddBlankLine(std::wstring* text) {
    *text += L"\r\n";
}

// One line, regardless of what the label and the value contain. `label` includes its padding up to the column
// of the values.
void AddLine(std::wstring* text, const std::wstring& label, const std::wstring& value) {
    const std::size_t start = text->size();
    *text += label;
    *text += value;
    ReplaceControlCharacters(text->data() + start, text->size() - start);
    *text += L"\r\n";
}

void AddHeader(std::wstring* text, const SupportFacts& facts) {
    constexpr wchar_t kRule[] = L"===============================================================\r\n";
    AddLine(text, L"TO: ", L"" AMBREL_SUPPORT_ADDRESS);
    AddLine(text, L"SUBJECT: ", SupportSubjectText(facts));
    AddBlankLine(text);
    *text += kRule;
    AddLine(text, L"  PASTE THIS INTO A NEW EMAIL TO ", L"" AMBREL_SUPPORT_ADDRESS);
    *text += kRule;
    AddBlankLine(text);
    *text += L">> DESCRIBE WHAT'S HAPPENING ABOVE THIS LINE <<\r\n\r\n\r\n\r\n";
    *text += L">> AUTOMATIC DIAGNOSTICS - DO NOT EDIT BELOW THIS LINE <<\r\n\r\n";
}

void AddApp(std::wstring* text, const AppState& state, const SupportFacts& facts) {
    const SYSTEMTIME& now = facts.now;
    *text += L"=== APP ===\r\n";
    AddLine(text, L"Version:        ", VersionText());
    AddLine(text, L"Now:            ",
            Formatted("%04u-%02u-%02u %02u:%02u:%02u", now.wYear, now.wMonth, now.wDay, now.wHour,
                      now.wMinute, now.wSecond));
    if (state.startTick > 0) AddLine(text, L"Session uptime: ", UptimeText(facts.tick - state.startTick));
    AddBlankLine(text);
}

const wchar_t* ArchitectureName(WORD architecture) {
    switch (architecture) {
        case PROCESSOR_ARCHITECTURE_AMD64: return L"x64";
        case PROCESSOR_ARCHITECTURE_INTEL: return L"x86";
        case PROCESSOR_ARCHITECTURE_ARM: return L"ARM";
        case PROCESSOR_ARCHITECTURE_ARM64: return L"ARM64";
        default: return L"unknown";
    }
}

std::wstring OsVersion(const OsInfo& os) {
    const std::wstring version = Formatted("%lu.%lu.%lu", os.major, os.minor, os.build);
    return os.updateRevision.empty() ? version : version + L"." + os.updateRevision;
}

void AddSystem(std::wstring* text, const AppState& state, const SupportFacts& facts) {
    *text += L"=== SYSTEM ===\r\nPlatform:       Windows\r\n";
    AddLine(text, L"OS:             ", OsName(facts.os));
    if (!facts.os.displayVersion.empty()) AddLine(text, L"Edition:        ", facts.os.displayVersion);
    AddLine(text, L"Version:        ", OsVersion(facts.os));
    AddLine(text, L"Hardware:       ", facts.hardwareName);
    AddLine(text, L"CPU:            ",
            facts.cpuName +
                Formatted(" (%ls, %lu cores)", ArchitectureName(facts.architecture), facts.processorCount));
    AddLine(text, L"Memory:         ",
            Formatted("%.1f GB", static_cast<double>(facts.memoryBytes) / kBytesPerGigabyte));
    AddLine(text, L"Locale:         ", facts.localeName);
    AddLine(text, L"Timezone:       ", facts.timeZoneName);
    AddLine(text, L"UI DPI:         ", Formatted("%u dpi", state.dpi != 0 ? state.dpi : kDesignDpi));
    AddLine(text, L"DWM composition: ", facts.composition ? L"enabled" : L"disabled");
    AddBlankLine(text);
}

void AddMonitor(std::wstring* text, std::size_t index, const MonitorProbe& monitor) {
    const std::wstring& name = monitor.description.empty() ? monitor.deviceName : monitor.description;
    *text += Formatted("[%zu] ", index);
    AddLine(text, name, monitor.primary ? L"  (PRIMARY)" : L"");
    AddLine(text, L"    Device:        ", monitor.deviceName);
    AddLine(text, L"    Mode:          ",
            Formatted("%ux%u @ %uHz, %u-bit", monitor.width, monitor.height, monitor.refresh,
                      monitor.bitsPerPixel));
    AddLine(text, L"    DDC/CI bright: ", monitor.brightnessCapable ? L"supported" : L"not supported");
    if (!monitor.brightnessCapable) return;
    AddLine(text, L"    HW brightness: ",
            Formatted("%u (range %u..%u)", monitor.current, monitor.minimum, monitor.maximum));
}

void AddDisplays(std::wstring* text, const SupportFacts& facts) {
    *text += L"=== DISPLAYS ===\r\n";
    AddLine(text, L"Total:          ", Formatted("%zu", facts.monitors.size()));
    for (std::size_t i = 0; i < facts.monitors.size(); ++i)
        AddMonitor(text, i, facts.monitors[i]);
    for (const std::wstring& adapter : facts.adapters)
        AddLine(text, L"Adapter:        ", adapter);
    AddBlankLine(text);
}

const wchar_t* PresetWord(double intensity) {
    switch (RecognisePreset(intensity)) {
        case FilterPreset::Day: return L"DAY (~4000K)";
        case FilterPreset::Evening: return L"EVENING (~2700K)";
        case FilterPreset::Night: return L"NIGHT (0K, pure red)";
        case FilterPreset::None: break;
    }
    return L"custom";
}

void AddPipeline(std::wstring* text, const AppState& state, bool restartDone) {
    if (!state.useLegacyGamma) {
        AddLine(text, L"Pipeline:       ", L"Magnification API");
        return;
    }
    std::wstring pipeline = L"Legacy gamma (SetDeviceGammaRamp)";
    if (state.lastApplyRejected) pipeline += L"  ** LAST APPLY REJECTED by Windows - range-limited **";
    AddLine(text, L"Pipeline:       ", pipeline);
    AddLine(text, L"Ramp applies:   ",
            Formatted("accepted %d / rejected %d this session", state.rampsAccepted, state.rampsRejected));
    AddLine(text, L"Gamma range:    ",
            state.gammaRangeExpanded ? L"expanded (GdiIcmGammaRange=256)"
                                     : L"Windows default (strong ramps blocked until expanded)");
    if (state.lastApplyRejected && state.gammaRangeExpanded && restartDone) {
        *text +=
            L"Gamma fix:      applied + restart done, ramps STILL rejected (driver level limit?) - banner "
            L"demoted\r\n";
    }
}

void AddFilter(std::wstring* text, const AppState& state, bool restartDone) {
    double red = 1.0;
    double green = 1.0;
    double blue = 1.0;
    IntensityToFilterRgb(state.intensity, &red, &green, &blue);

    *text += L"=== FILTER STATE ===\r\n";
    AddLine(text, L"Enabled (KIVO):  ", OnOff(state.filterOn));
    AddLine(text, L"Intensity:      ", Formatted("%.3f  (warmth slider)", state.intensity));
    AddLine(text, L"-> Kelvin:      ", Formatted("%dK", RoundedKelvin(state.intensity)));
    AddLine(text, L"-> Target RGB:  ", Formatted("(%.3f, %.3f, %.3f)", red, green, blue));
    // Rounded, unlike the label on the panel, which is truncated.
    AddLine(text, L"Brightness:     ",
            Formatted("%.3f  (%d%%)", state.brightness, static_cast<int>(state.brightness * 100.0 + 0.5)));
    AddLine(text, L"Allow ext. dim: ", OnOff(state.allowExtremeDim));
    AddLine(text, L"Active preset:  ", PresetWord(state.intensity));
    AddPipeline(text, state, restartDone);
    AddBlankLine(text);
}

void AddPwmSafe(std::wstring* text, const AppState& state) {
    *text += L"=== PWM-SAFE MODE ===\r\n";
    AddLine(text, L"Toggle:           ", OnOff(state.pwmSafe));
    AddLine(text, L"Available:        ", YesNo(state.pwmTargetsPresent));
    AddLine(text, L"Locked at 100%:   ", YesNo(state.pwmLockConfirmed));
    AddLine(text, L"Pending verify:   ", YesNo(state.pwmVerifyPending));
    AddLine(text, L"At 100% / total:  ", Formatted("%d of %d", state.pwmTargetsAt100, state.pwmTargetCount));
    if (state.pwmTargetsPresent) {
        AddLine(text, L"Target type:      ",
                state.pwmBuiltInOnly ? L"built-in panel(s) only (WMI) - externals not controllable"
                                     : L"includes external display(s) (DDC/CI)");
    }
    if (state.pwmRetrySlowed) *text += L"Retry pace:       slowed to 30s (display would not hold 100%)\r\n";
    if (!state.pwmSavedBrightness.empty()) *text += L"Brightness snapshots taken on enable:\r\n";
    for (const auto& saved : state.pwmSavedBrightness)
        AddLine(text, L"  " + saved.first + L" -> ", Formatted("%u", saved.second));
    AddBlankLine(text);
}

void AddAutostart(std::wstring* text, const AutostartFacts& autostart) {
    if (autostart.value.empty()) {
        *text += L"Autostart key:    not set\r\n";
        return;
    }
    AddLine(text, L"Autostart key:    ", autostart.value);
    AddLine(text, L"  target exists:  ", autostart.targetExists ? L"yes" : L"NO - STALE PATH");
    AddLine(text, L"  is this exe:    ", autostart.isThisProgram ? L"yes" : L"NO - DIFFERENT COPY");
}

const wchar_t* LegacyWord(const AppState& state) {
    if (!state.useLegacyGamma) return L"OFF";
    return state.legacyModeAutoSet ? L"ON  (auto-fallback on this hardware)" : L"ON  (user-chosen)";
}

void AddSettings(std::wstring* text, const AppState& state, const AutostartFacts& autostart) {
    *text += L"=== SETTINGS ===\r\n";
    AddLine(text, L"Launch at start:  ", OnOff(state.launchAtStart));
    AddLine(text, L"Allow extreme dim:", OnOff(state.allowExtremeDim));
    AddLine(text, L"Legacy gamma:     ", LegacyWord(state));
    AddLine(text, L"PWM-Safe mode:    ", OnOff(state.pwmSafe));
    AddAutostart(text, autostart);
    if (!state.settingsPath.empty()) AddLine(text, L"Settings file:    ", state.settingsPath);
    AddBlankLine(text);
}

void AddLog(std::wstring* text, const SupportFacts& facts) {
    *text += Formatted("=== EVENT LOG (most recent %zu, oldest first) ===\r\n", facts.recentLines.size());
    for (const std::wstring& line : facts.recentLines)
        AddLine(text, L"", line);
    if (facts.persistedLines.empty()) return;
    *text +=
        L"\r\n=== PERSISTED LOG (last 40 lines; survives restarts, so boot\r\n"
        L"    sessions are visible; may repeat current-session lines) ===\r\n";
    for (const std::wstring& line : facts.persistedLines)
        AddLine(text, L"", line);
}

}  // namespace

std::wstring UptimeText(std::uint64_t elapsed) {
    const unsigned long long days = elapsed / 86400000;
    const unsigned long long hours = elapsed / 1000 % 86400 / 3600;
    const unsigned long long minutes = elapsed / 1000 % 3600 / 60;
    const unsigned long long seconds = elapsed / 1000 % 60;
    if (days != 0) return Formatted("%llud %lluh %llum", days, hours, minutes);
    if (hours != 0) return Formatted("%lluh %llum", hours, minutes);
    if (minutes != 0) return Formatted("%llum %llus", minutes, seconds);
    return Formatted("%llus", seconds);
}

std::wstring SupportSubjectText(const SupportFacts& facts) {
    const std::wstring tag = Formatted("%016llx", static_cast<unsigned long long>(facts.machineTag));
    return L"Ambrel Windows " + VersionText() + L" - Feedback (" + tag + L", " + OsName(facts.os) +
           Formatted(" b%lu)", facts.os.build);
}

std::wstring SupportBundleText(const AppState& state, const SupportFacts& facts) {
    std::wstring text;
    AddHeader(&text, facts);
    AddApp(&text, state, facts);
    AddSystem(&text, state, facts);
    AddDisplays(&text, facts);
    AddFilter(&text, state, facts.restartDoneSinceFix);
    AddPwmSafe(&text, state);
    AddSettings(&text, state, facts.autostart);
    AddLog(&text, facts);
    text += L"\r\n=== END DIAGNOSTICS ===\r\n";
    return text;
}
