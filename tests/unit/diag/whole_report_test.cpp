// The complete report, character for character, of a machine with every optional line and of one that reports
// nothing.
#include "diag/report_fixture.h"
#include "res/version.h"

namespace {

class WholeReport : public SupportReport {
protected:
    static MonitorProbe Monitor(const wchar_t* device, const wchar_t* description) {
        MonitorProbe monitor;
        monitor.deviceName = device;
        monitor.description = description;
        return monitor;
    }

    // Legacy Mode rejected, fixed and restarted; brightness locked on three displays and slowed; a stale
    // autostart entry; three displays on two adapters; a log.
    void MakeEverythingHappen() {
        facts.machineTag = 0x00C0FFEE12345678;
        facts.tick = 1000000000 + 93784005;  // 1 d 2 h 3 min 4.005 s later
        state.startTick = 1000000000;
        state.dpi = 144;
        MonitorProbe first = Monitor(L"\\\\.\\DISPLAY1", L"Dell U2720Q");
        first.width = 3840;
        first.height = 2160;
        first.refresh = 60;
        first.bitsPerPixel = 32;
        first.primary = true;
        first.brightnessCapable = true;
        first.current = 75;
        first.minimum = 0;
        first.maximum = 100;
        MonitorProbe second = Monitor(L"\\\\.\\DISPLAY2", L"");
        second.width = 1280;
        second.height = 1024;
        second.refresh = 75;
        second.bitsPerPixel = 24;
        facts.monitors = {first, second, Monitor(L"", L"")};
        facts.adapters = {L"Imaginary Graphics", L"Second Graphics"};
        state.filterOn = true;
        state.intensity = 0.3846153846153846;
        state.brightness = 0.999;
        state.allowExtremeDim = true;
        state.useLegacyGamma = true;
        state.legacyModeAutoSet = true;
        state.lastApplyRejected = true;
        state.gammaRangeExpanded = true;
        facts.restartDoneSinceFix = true;
        state.rampsAccepted = 12;
        state.rampsRejected = 3;
        state.pwmSafe = true;
        state.pwmTargetsPresent = true;
        state.pwmLockConfirmed = false;
        state.pwmVerifyPending = true;
        state.pwmTargetsAt100 = 2;
        state.pwmTargetCount = 3;
        state.pwmRetrySlowed = true;
        state.pwmSavedBrightness = {{L"Dell U2720Q", 75}, {L"Built-in", 40}, {L"dell", 100}};
        state.launchAtStart = true;
        facts.autostart.value = L"D:\\Old\\Ambrel.exe";
        state.settingsPath = L"C:\\Users\\Zo\u00eb\\AppData\\Roaming\\Ambrel\\settings.ini";
        facts.recentLines = {L"[21:04:07.031] Saved settings", L"[21:04:08.000] Filter ON"};
        facts.persistedLines = {L"---------- session start ----------", L"[21:04:07.031] Saved settings"};
    }
};

}  // namespace

TEST_F(WholeReport, IsExactWhenEveryOptionalLineIsPresent) {
    MakeEverythingHappen();
    EXPECT_EQ(
        Report(),
        L"TO: support@ambrel.example\r\n"
        L"SUBJECT: Ambrel Windows " AMBREL_VERSION
        L" - Feedback (00c0ffee12345678, Windows 11 Pro b22631)\r\n"
        L"\r\n"
        L"===============================================================\r\n"
        L"  PASTE THIS INTO A NEW EMAIL TO support@ambrel.example\r\n"
        L"===============================================================\r\n"
        L"\r\n"
        L">> DESCRIBE WHAT'S HAPPENING ABOVE THIS LINE <<\r\n"
        L"\r\n"
        L"\r\n"
        L"\r\n"
        L">> AUTOMATIC DIAGNOSTICS - DO NOT EDIT BELOW THIS LINE <<\r\n"
        L"\r\n"
        L"=== APP ===\r\n"
        L"Version:        " AMBREL_VERSION
        L"\r\n"
        L"Now:            2026-03-07 09:05:02\r\n"
        L"Session uptime: 1d 2h 3m\r\n"
        L"\r\n"
        L"=== SYSTEM ===\r\n"
        L"Platform:       Windows\r\n"
        L"OS:             Windows 11 Pro\r\n"
        L"Edition:        23H2\r\n"
        L"Version:        10.0.22631.4037\r\n"
        L"Hardware:       LENOVO 20XW\r\n"
        L"CPU:            Imaginary CPU 3000 (x64, 8 cores)\r\n"
        L"Memory:         16.0 GB\r\n"
        L"Locale:         en-GB\r\n"
        L"Timezone:       GMT Standard Time\r\n"
        L"UI DPI:         144 dpi\r\n"
        L"DWM composition: enabled\r\n"
        L"\r\n"
        L"=== DISPLAYS ===\r\n"
        L"Total:          3\r\n"
        L"[0] Dell U2720Q  (PRIMARY)\r\n"
        L"    Device:        \\\\.\\DISPLAY1\r\n"
        L"    Mode:          3840x2160 @ 60Hz, 32-bit\r\n"
        L"    DDC/CI bright: supported\r\n"
        L"    HW brightness: 75 (range 0..100)\r\n"
        L"[1] \\\\.\\DISPLAY2\r\n"
        L"    Device:        \\\\.\\DISPLAY2\r\n"
        L"    Mode:          1280x1024 @ 75Hz, 24-bit\r\n"
        L"    DDC/CI bright: not supported\r\n"
        L"[2] \r\n"
        L"    Device:        \r\n"
        L"    Mode:          0x0 @ 0Hz, 0-bit\r\n"
        L"    DDC/CI bright: not supported\r\n"
        L"Adapter:        Imaginary Graphics\r\n"
        L"Adapter:        Second Graphics\r\n"
        L"\r\n"
        L"=== FILTER STATE ===\r\n"
        L"Enabled (KIVO):  ON\r\n"
        L"Intensity:      0.385  (warmth slider)\r\n"
        L"-> Kelvin:      4000K\r\n"
        L"-> Target RGB:  (1.000, 0.939, 0.515)\r\n"
        L"Brightness:     0.999  (100%)\r\n"
        L"Allow ext. dim: ON\r\n"
        L"Active preset:  DAY (~4000K)\r\n"
        L"Pipeline:       Legacy gamma (SetDeviceGammaRamp)  ** LAST APPLY REJECTED by Windows - range-limited "
        L"**\r\n"
        L"Ramp applies:   accepted 12 / rejected 3 this session\r\n"
        L"Gamma range:    expanded (GdiIcmGammaRange=256)\r\n"
        L"Gamma fix:      applied + restart done, ramps STILL rejected (driver level limit?) - banner demoted\r\n"
        L"\r\n"
        L"=== PWM-SAFE MODE ===\r\n"
        L"Toggle:           ON\r\n"
        L"Available:        yes\r\n"
        L"Locked at 100%:   no\r\n"
        L"Pending verify:   yes\r\n"
        L"At 100% / total:  2 of 3\r\n"
        L"Target type:      includes external display(s) (DDC/CI)\r\n"
        L"Retry pace:       slowed to 30s (display would not hold 100%)\r\n"
        L"Brightness snapshots taken on enable:\r\n"
        L"  Built-in -> 40\r\n"
        L"  Dell U2720Q -> 75\r\n"
        L"  dell -> 100\r\n"
        L"\r\n"
        L"=== SETTINGS ===\r\n"
        L"Launch at start:  ON\r\n"
        L"Allow extreme dim:ON\r\n"
        L"Legacy gamma:     ON  (auto-fallback on this hardware)\r\n"
        L"PWM-Safe mode:    ON\r\n"
        L"Autostart key:    D:\\Old\\Ambrel.exe\r\n"
        L"  target exists:  NO - STALE PATH\r\n"
        L"  is this exe:    NO - DIFFERENT COPY\r\n"
        L"Settings file:    C:\\Users\\Zo\u00eb\\AppData\\Roaming\\Ambrel\\settings.ini\r\n"
        L"\r\n"
        L"=== EVENT LOG (most recent 2, oldest first) ===\r\n"
        L"[21:04:07.031] Saved settings\r\n"
        L"[21:04:08.000] Filter ON\r\n"
        L"\r\n"
        L"=== PERSISTED LOG (last 40 lines; survives restarts, so boot\r\n"
        L"    sessions are visible; may repeat current-session lines) ===\r\n"
        L"---------- session start ----------\r\n"
        L"[21:04:07.031] Saved settings\r\n"
        L"\r\n"
        L"=== END DIAGNOSTICS ===\r\n");
}

TEST_F(WholeReport, AMachineThatReportsNothingGetsPlaceholdersAndFewerLines) {
    facts = SupportFacts{};
    facts.hardwareName = L"unknown";
    facts.cpuName = L"unknown";
    facts.architecture = 0xFFFF;
    facts.localeName = L"unknown";
    facts.timeZoneName = L"unknown";
    EXPECT_EQ(Report(),
              L"TO: support@ambrel.example\r\n"
              L"SUBJECT: Ambrel Windows " AMBREL_VERSION
              L" - Feedback (0000000000000000, Windows b0)\r\n"
              L"\r\n"
              L"===============================================================\r\n"
              L"  PASTE THIS INTO A NEW EMAIL TO support@ambrel.example\r\n"
              L"===============================================================\r\n"
              L"\r\n"
              L">> DESCRIBE WHAT'S HAPPENING ABOVE THIS LINE <<\r\n"
              L"\r\n"
              L"\r\n"
              L"\r\n"
              L">> AUTOMATIC DIAGNOSTICS - DO NOT EDIT BELOW THIS LINE <<\r\n"
              L"\r\n"
              L"=== APP ===\r\n"
              L"Version:        " AMBREL_VERSION
              L"\r\n"
              L"Now:            0000-00-00 00:00:00\r\n"
              L"\r\n"
              L"=== SYSTEM ===\r\n"
              L"Platform:       Windows\r\n"
              L"OS:             Windows\r\n"
              L"Version:        0.0.0\r\n"
              L"Hardware:       unknown\r\n"
              L"CPU:            unknown (unknown, 0 cores)\r\n"
              L"Memory:         0.0 GB\r\n"
              L"Locale:         unknown\r\n"
              L"Timezone:       unknown\r\n"
              L"UI DPI:         96 dpi\r\n"
              L"DWM composition: disabled\r\n"
              L"\r\n"
              L"=== DISPLAYS ===\r\n"
              L"Total:          0\r\n"
              L"\r\n"
              L"=== FILTER STATE ===\r\n"
              L"Enabled (KIVO):  OFF\r\n"
              L"Intensity:      0.385  (warmth slider)\r\n"
              L"-> Kelvin:      3998K\r\n"
              L"-> Target RGB:  (1.000, 0.939, 0.515)\r\n"
              L"Brightness:     1.000  (100%)\r\n"
              L"Allow ext. dim: OFF\r\n"
              L"Active preset:  DAY (~4000K)\r\n"
              L"Pipeline:       Magnification API\r\n"
              L"\r\n"
              L"=== PWM-SAFE MODE ===\r\n"
              L"Toggle:           OFF\r\n"
              L"Available:        no\r\n"
              L"Locked at 100%:   no\r\n"
              L"Pending verify:   no\r\n"
              L"At 100% / total:  0 of 0\r\n"
              L"\r\n"
              L"=== SETTINGS ===\r\n"
              L"Launch at start:  OFF\r\n"
              L"Allow extreme dim:OFF\r\n"
              L"Legacy gamma:     OFF\r\n"
              L"PWM-Safe mode:    OFF\r\n"
              L"Autostart key:    not set\r\n"
              L"\r\n"
              L"=== EVENT LOG (most recent 0, oldest first) ===\r\n"
              L"\r\n"
              L"=== END DIAGNOSTICS ===\r\n");
}

TEST_F(WholeReport, EveryLineEndsWithCrLfAndNothingElse) {
    MakeEverythingHappen();
    EXPECT_EQ(LinesOf(Report()).size(), 95u);
    EXPECT_EQ(Report().find(L'\0'), std::wstring::npos);
}

TEST_F(WholeReport, DoesNotReadTheProgramsState) {
    MakeEverythingHappen();
    const std::wstring before = Report();
    g_app.intensity = 1.0;
    g_app.useLegacyGamma = false;
    g_app.settingsPath = L"elsewhere";
    EXPECT_EQ(Report(), before);
    g_app = AppState{};
}
