#include "store/settings_fixture.h"

namespace {

using settings_fixture::g_log;
using settings_fixture::Loaded;

using Lines = std::vector<std::string>;

class SettingsSave : public settings_fixture::SettingsTest {
protected:
    void SetUp() override {
        SettingsTest::SetUp();
        LoadSettings();
        g_log.clear();
    }
};

}  // namespace

TEST_F(SettingsSave, NothingIsWrittenBeforeTheFirstSave) {
    EXPECT_FALSE(FileExists(path));
}

TEST_F(SettingsSave, AFreshStateIsWrittenWithEveryKeyInOrder) {
    SaveSettings();
    EXPECT_EQ(FileLines(), (Lines{"[Filter]", "Intensity=385", "Brightness=1000", "[Settings]",
                                  "LaunchAtStart=0", "AllowExtremeDim=0", "UseLegacyGamma=0",
                                  "LegacyModeAutoSet=0", "PWMSafeMode=0", "GammaFixEpoch=0"}));
}

TEST_F(SettingsSave, EveryFieldIsWrittenUnderItsKey) {
    g_app.intensity = 1.0;
    g_app.brightness = 0.7;
    g_app.launchAtStart = true;
    g_app.useLegacyGamma = true;
    g_app.pwmSafe = true;
    g_app.gammaFixEpoch = 18446744073709551615u;
    SaveSettings();
    EXPECT_EQ(FileLines(),
              (Lines{"[Filter]", "Intensity=1000", "Brightness=700", "[Settings]", "LaunchAtStart=1",
                     "AllowExtremeDim=0", "UseLegacyGamma=1", "LegacyModeAutoSet=0", "PWMSafeMode=1",
                     "GammaFixEpoch=18446744073709551615"}));
}

TEST_F(SettingsSave, TheOtherFlagsAreWrittenUnderTheirs) {
    g_app.allowExtremeDim = true;
    g_app.legacyModeAutoSet = true;
    SaveSettings();
    EXPECT_EQ(FileLines(), (Lines{"[Filter]", "Intensity=385", "Brightness=1000", "[Settings]",
                                  "LaunchAtStart=0", "AllowExtremeDim=1", "UseLegacyGamma=0",
                                  "LegacyModeAutoSet=1", "PWMSafeMode=0", "GammaFixEpoch=0"}));
}

TEST_F(SettingsSave, TheFilterBeingOnIsNotStored) {
    SaveSettings();
    const std::string off = ReadBytes(path);
    g_app.filterOn = true;
    SaveSettings();
    EXPECT_EQ(ReadBytes(path), off);
    EXPECT_TRUE(g_app.filterOn);
}

TEST_F(SettingsSave, ThousandthsAreTruncated) {
    g_app.intensity = 0.3846153846153846;
    g_app.brightness = 0.9999;
    SaveSettings();
    EXPECT_EQ(FileLines()[1], "Intensity=384");
    EXPECT_EQ(FileLines()[2], "Brightness=999");

    g_app.intensity = 0.5846153846153845;
    g_app.brightness = 0.0009;
    SaveSettings();
    EXPECT_EQ(FileLines()[1], "Intensity=584");
    EXPECT_EQ(FileLines()[2], "Brightness=0");
}

TEST_F(SettingsSave, LogsOneLine) {
    SaveSettings();
    EXPECT_EQ(g_log, std::vector<std::wstring>{L"Saved settings"});
}

TEST_F(SettingsSave, EveryThousandthSurvivesALoadAndASave) {
    for (int perMille = 0; perMille <= 1000; perMille += 37) {
        g_app.intensity = perMille / 1000.0;
        SaveSettings();
        Reload();
        EXPECT_EQ(g_app.intensity, perMille / 1000.0);
        SaveSettings();
        EXPECT_EQ(FileLines()[1], "Intensity=" + std::to_string(perMille));
    }
}

TEST_F(SettingsSave, AnyEpochSurvivesALoadAndASave) {
    for (const std::uint64_t epoch : {1ull, 4294967295ull, 9223372036854775807ull, 18446744073709551615ull}) {
        g_app.gammaFixEpoch = epoch;
        SaveSettings();
        Reload();
        EXPECT_EQ(g_app.gammaFixEpoch, epoch);
    }
}

TEST_F(SettingsSave, ALaunchValueOf7IsWrittenBackAs1) {
    Stored("[Settings]\r\nLaunchAtStart=7\r\n");
    Reload();
    SaveSettings();
    const Lines lines = FileLines();
    EXPECT_EQ(lines[0], "[Settings]");
    EXPECT_EQ(lines[1], "LaunchAtStart=1");
}

TEST_F(SettingsSave, ClampedValuesAreWrittenBackClamped) {
    Stored("[Filter]\r\nIntensity=-5\r\nBrightness=50\r\n");
    Reload();
    SaveSettings();
    EXPECT_EQ(FileLines()[1], "Intensity=1000");
    EXPECT_EQ(FileLines()[2], "Brightness=100");
}

TEST_F(SettingsSave, ForeignSectionsAndKeysStayAsTheyAre) {
    Stored(
        "[Window]\r\nLeft=12\r\nName=my name\r\n[Filter]\r\nIntensity=1\r\nHue=77\r\n"
        "[Settings]\r\nPWMSafeMode=0\r\nFuture=x y\r\n[Last]\r\nEmpty=\r\n");
    Reload();
    g_app.intensity = 0.5;
    g_app.pwmSafe = true;
    SaveSettings();
    EXPECT_EQ(FileLines(), (Lines{"[Window]", "Left=12", "Name=my name", "[Filter]", "Intensity=500",
                                  "Hue=77", "Brightness=1000", "[Settings]", "PWMSafeMode=1", "Future=x y",
                                  "LaunchAtStart=0", "AllowExtremeDim=0", "UseLegacyGamma=0",
                                  "LegacyModeAutoSet=0", "GammaFixEpoch=0", "[Last]", "Empty="}));
}

TEST_F(SettingsSave, TheFileIsNotHeldOpen) {
    SaveSettings();
    { const LockedFile exclusive(path); }  // fails if the program still has it open
    EXPECT_TRUE(DeleteFileW(path.c_str()));
    SaveSettings();
    EXPECT_EQ(FileLines().size(), 10u);
}

TEST_F(SettingsSave, SavingDoesNotChangeTheState) {
    g_app.intensity = 0.38461;
    g_app.filterOn = true;
    const std::string before = Loaded();
    SaveSettings();
    EXPECT_EQ(Loaded(), before);
}
