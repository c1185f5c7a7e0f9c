// The setting is stored twice: in settings.ini and in the registry.
#include "store/settings_fixture.h"

#include "store/autostart.h"

namespace {

using settings_fixture::g_log;

constexpr wchar_t kKey[] = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr wchar_t kValue[] = L"Ambrel2";

class AutostartSetting : public settings_fixture::SettingsTest {
protected:
    void SetUp() override {
        SettingsTest::SetUp();
        ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, kKey, kValue, REG_SZ, L"C:\\old\\a.exe", 28),
                  ERROR_SUCCESS);
    }
    void TearDown() override {
        RegDeleteKeyValueW(HKEY_CURRENT_USER, kKey, kValue);
        SettingsTest::TearDown();
    }

    int LinesContaining(const std::string& wanted) const {
        int count = 0;
        for (const std::string& line : FileLines())
            count += line == wanted ? 1 : 0;
        return count;
    }
};

}  // namespace

TEST_F(AutostartSetting, TheRepairDoesNotSaveButTheNextSaveContainsItsFlag) {
    const std::string off = "[Settings]\r\nLaunchAtStart=0\r\n";
    Stored(off);
    LoadSettings();
    ASSERT_FALSE(g_app.launchAtStart);
    RepairAutostartEntry();
    EXPECT_TRUE(g_app.launchAtStart);
    EXPECT_EQ(ReadBytes(path), off);
    SaveSettings();
    EXPECT_EQ(LinesContaining("LaunchAtStart=1"), 1);
}

TEST_F(AutostartSetting, SettingItDoesNotSave) {
    Stored("[Settings]\r\nLaunchAtStart=1\r\n");
    LoadSettings();
    SetAutostart(false);
    EXPECT_EQ(ReadBytes(path), "[Settings]\r\nLaunchAtStart=1\r\n");
    SaveSettings();
    EXPECT_EQ(LinesContaining("LaunchAtStart=0"), 1);
}

TEST_F(AutostartSetting, OffAndSavedStaysOffAfterTheNextStart) {
    Stored("[Settings]\r\nLaunchAtStart=1\r\n");
    LoadSettings();
    RepairAutostartEntry();
    SetAutostart(false);
    SaveSettings();
    g_log.clear();
    Reload();
    RepairAutostartEntry();
    EXPECT_FALSE(g_app.launchAtStart);
    EXPECT_EQ(ReadAutostartValue(), L"");
    EXPECT_EQ(g_log.size(), 1U) << "the settings' own line, and none of the repair";
}
