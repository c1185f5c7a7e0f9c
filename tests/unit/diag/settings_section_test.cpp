#include "diag/report_fixture.h"

namespace {

class SettingsSection : public SupportReport {};

}  // namespace

TEST_F(SettingsSection, WithEverythingOffAndNothingSet) {
    EXPECT_EQ(Section(L"SETTINGS"),
              L"=== SETTINGS ===\r\n"
              L"Launch at start:  OFF\r\n"
              L"Allow extreme dim:OFF\r\n"
              L"Legacy gamma:     OFF\r\n"
              L"PWM-Safe mode:    OFF\r\n"
              L"Autostart key:    not set\r\n"
              L"\r\n");
}

TEST_F(SettingsSection, WithEverythingOnAndSet) {
    state.launchAtStart = true;
    state.allowExtremeDim = true;
    state.useLegacyGamma = true;
    state.pwmSafe = true;
    state.settingsPath = L"C:\\Data\\Ambrel\\settings.ini";
    facts.autostart = {L"C:\\Tools\\Ambrel.exe", true, true};
    EXPECT_EQ(Section(L"SETTINGS"),
              L"=== SETTINGS ===\r\n"
              L"Launch at start:  ON\r\n"
              L"Allow extreme dim:ON\r\n"
              L"Legacy gamma:     ON  (user-chosen)\r\n"
              L"PWM-Safe mode:    ON\r\n"
              L"Autostart key:    C:\\Tools\\Ambrel.exe\r\n"
              L"  target exists:  yes\r\n"
              L"  is this exe:    yes\r\n"
              L"Settings file:    C:\\Data\\Ambrel\\settings.ini\r\n"
              L"\r\n");
}

TEST_F(SettingsSection, EachSwitchHasItsOwnLine) {
    const auto expect = [&](const wchar_t* launch, const wchar_t* dim, const wchar_t* legacy,
                            const wchar_t* pwm) {
        EXPECT_EQ(After(L"Launch at start:  "), launch);
        EXPECT_EQ(After(L"Allow extreme dim:"), dim);
        EXPECT_EQ(After(L"Legacy gamma:     "), legacy);
        EXPECT_EQ(After(L"PWM-Safe mode:    "), pwm);
    };
    state.launchAtStart = true;
    expect(L"ON", L"OFF", L"OFF", L"OFF");
    state = AppState{};
    state.allowExtremeDim = true;
    expect(L"OFF", L"ON", L"OFF", L"OFF");
    state = AppState{};
    state.useLegacyGamma = true;
    expect(L"OFF", L"OFF", L"ON  (user-chosen)", L"OFF");
    state = AppState{};
    state.pwmSafe = true;
    expect(L"OFF", L"OFF", L"OFF", L"ON");
}

TEST_F(SettingsSection, LegacyModeShowsWhoChoseIt) {
    state.useLegacyGamma = true;
    state.legacyModeAutoSet = true;
    EXPECT_EQ(After(L"Legacy gamma:     "), L"ON  (auto-fallback on this hardware)");
    state.legacyModeAutoSet = false;
    EXPECT_EQ(After(L"Legacy gamma:     "), L"ON  (user-chosen)");
    state.useLegacyGamma = false;
    state.legacyModeAutoSet = true;
    EXPECT_EQ(After(L"Legacy gamma:     "), L"OFF");
}

TEST_F(SettingsSection, AnAutostartEntryThatNamesAMissingFileIsStale) {
    facts.autostart = {L"D:\\Gone\\Ambrel.exe", false, false};
    EXPECT_EQ(After(L"Autostart key:    "), L"D:\\Gone\\Ambrel.exe");
    EXPECT_EQ(After(L"  target exists:  "), L"NO - STALE PATH");
    EXPECT_EQ(After(L"  is this exe:    "), L"NO - DIFFERENT COPY");
}

TEST_F(SettingsSection, AnAutostartEntryToAnotherCopyExists) {
    facts.autostart = {L"D:\\Copy\\Ambrel.exe", true, false};
    EXPECT_EQ(After(L"  target exists:  "), L"yes");
    EXPECT_EQ(After(L"  is this exe:    "), L"NO - DIFFERENT COPY");
}

TEST_F(SettingsSection, ThisProgramsEntryMayNameAMissingFile) {
    facts.autostart = {L"D:\\Deleted\\Ambrel.exe", false, true};
    EXPECT_EQ(After(L"  target exists:  "), L"NO - STALE PATH");
    EXPECT_EQ(After(L"  is this exe:    "), L"yes");
}

TEST_F(SettingsSection, WithoutAnAutostartEntryThereIsOneLine) {
    facts.autostart = {L"", true, true};
    EXPECT_EQ(After(L"Autostart key:    "), L"not set");
    EXPECT_FALSE(HasLine(L"  target exists:"));
    EXPECT_FALSE(HasLine(L"  is this exe:"));
}

TEST_F(SettingsSection, AnAutostartValueOf3000CharactersIsComplete) {
    facts.autostart = {L"C:\\" + std::wstring(2990, L'p') + L"END.exe", true, false};
    EXPECT_EQ(After(L"Autostart key:    "), facts.autostart.value);
}

TEST_F(SettingsSection, WithoutASettingsPathTheLineIsLeftOut) {
    state.settingsPath.clear();
    EXPECT_FALSE(HasLine(L"Settings file:"));
}

TEST_F(SettingsSection, ASettingsPathOfAnyLengthAndCharactersIsComplete) {
    state.settingsPath = L"C:\\100%s\\Zo\u00eb\\" + std::wstring(3000, L'q') + L"\\settings.ini";
    EXPECT_EQ(After(L"Settings file:    "), state.settingsPath);
}
