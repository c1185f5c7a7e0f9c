#include "store/settings_fixture.h"

namespace {

using settings_fixture::g_log;
using settings_fixture::kDefaults;
using settings_fixture::Loaded;

class SettingsLoad : public settings_fixture::SettingsTest {
protected:
    // Loads a file of one line in the section of its key.
    void LoadWith(const std::string& filter, const std::string& settings = {}) const {
        Stored("[Filter]\r\n" + filter + "\r\n[Settings]\r\n" + settings + "\r\n");
        Reload();
    }

    double Intensity(const std::string& text) const {
        LoadWith("Intensity=" + text);
        return g_app.intensity;
    }

    double Brightness(const std::string& text, const std::string& settings = {}) const {
        LoadWith("Brightness=" + text, settings);
        return g_app.brightness;
    }

    std::uint64_t Epoch(const std::string& text) const {
        LoadWith("", "GammaFixEpoch=" + text);
        return g_app.gammaFixEpoch;
    }
};

}  // namespace

TEST_F(SettingsLoad, ThePathIsTheProgramsFolderInTheRoamingApplicationData) {
    LoadSettings();
    EXPECT_EQ(g_app.settingsPath, applicationData.path + L"\\Ambrel2\\settings.ini");
    EXPECT_EQ(GetSettingsPath(), applicationData.path + L"\\Ambrel2\\settings.ini");
}

TEST_F(SettingsLoad, AMissingFolderIsCreatedButNoFile) {
    ASSERT_FALSE(FileExists(folder));
    LoadSettings();
    EXPECT_TRUE(FileExists(folder));
    EXPECT_FALSE(FileExists(path));
}

TEST_F(SettingsLoad, ThePathIsComputedOnceByTheLoadAndNotByTheSave) {
    LoadSettings();
    EXPECT_EQ(settings_fixture::g_folderCalls, 1);
    SaveSettings();
    SaveSettings();
    EXPECT_EQ(settings_fixture::g_folderCalls, 1);
}

TEST_F(SettingsLoad, WithoutAFileEveryValueIsItsDefault) {
    g_app.intensity = 0.9;
    g_app.brightness = 0.2;
    g_app.launchAtStart = g_app.allowExtremeDim = g_app.useLegacyGamma = true;
    g_app.legacyModeAutoSet = g_app.pwmSafe = g_app.filterOn = true;
    g_app.gammaFixEpoch = 7;
    LoadSettings();
    EXPECT_EQ(Loaded(), kDefaults);
}

TEST_F(SettingsLoad, EveryKeyIsReadIntoItsField) {
    Stored(
        "[Filter]\r\nIntensity=585\r\nBrightness=850\r\n"
        "[Settings]\r\nLaunchAtStart=1\r\nAllowExtremeDim=1\r\nUseLegacyGamma=1\r\nLegacyModeAutoSet=1\r\n"
        "PWMSafeMode=1\r\nGammaFixEpoch=1786700000\r\n");
    LoadSettings();
    EXPECT_EQ(g_app.intensity, 0.585);
    EXPECT_EQ(g_app.brightness, 0.85);
    EXPECT_TRUE(g_app.launchAtStart);
    EXPECT_TRUE(g_app.allowExtremeDim);
    EXPECT_TRUE(g_app.useLegacyGamma);
    EXPECT_TRUE(g_app.legacyModeAutoSet);
    EXPECT_TRUE(g_app.pwmSafe);
    EXPECT_EQ(g_app.gammaFixEpoch, 1786700000u);
    EXPECT_FALSE(g_app.filterOn);
}

TEST_F(SettingsLoad, EachFlagSetsItsOwnFieldOnly) {
    LoadWith("", "LaunchAtStart=1");
    EXPECT_EQ(Loaded(), "0.38500000000000001 1 launch=1 dim=0 legacy=0 auto=0 pwm=0 epoch=0 filter=0");
    LoadWith("", "AllowExtremeDim=1");
    EXPECT_EQ(Loaded(), "0.38500000000000001 1 launch=0 dim=1 legacy=0 auto=0 pwm=0 epoch=0 filter=0");
    LoadWith("", "UseLegacyGamma=1");
    EXPECT_EQ(Loaded(), "0.38500000000000001 1 launch=0 dim=0 legacy=1 auto=0 pwm=0 epoch=0 filter=0");
    LoadWith("", "LegacyModeAutoSet=1");
    EXPECT_EQ(Loaded(), "0.38500000000000001 1 launch=0 dim=0 legacy=0 auto=1 pwm=0 epoch=0 filter=0");
    LoadWith("", "PWMSafeMode=1");
    EXPECT_EQ(Loaded(), "0.38500000000000001 1 launch=0 dim=0 legacy=0 auto=0 pwm=1 epoch=0 filter=0");
}

TEST_F(SettingsLoad, AKeyInTheOtherSectionIsIgnored) {
    Stored(
        "[Settings]\r\nIntensity=900\r\nBrightness=200\r\n[Filter]\r\nPWMSafeMode=1\r\nGammaFixEpoch=5\r\n");
    LoadSettings();
    EXPECT_EQ(Loaded(), kDefaults);
}

TEST_F(SettingsLoad, TheFilterIsOffRegardlessOfStateAndFile) {
    g_app.filterOn = true;
    Stored("[Filter]\r\nFilterOn=1\r\nOn=1\r\n[Settings]\r\nFilterOn=1\r\n");
    LoadSettings();
    EXPECT_FALSE(g_app.filterOn);
}

TEST_F(SettingsLoad, OneLineOfTheLogReportsWhatWasRead) {
    Stored(
        "[Filter]\r\nIntensity=585\r\nBrightness=50\r\n"
        "[Settings]\r\nAllowExtremeDim=2\r\nUseLegacyGamma=0\r\nPWMSafeMode=1\r\n");
    LoadSettings();
    EXPECT_EQ(g_log,
              std::vector<std::wstring>{
                  L"Loaded settings: intensity=0.585 brightness=0.050 extremeDim=1 legacy=0 pwmSafe=1"});
}

TEST_F(SettingsLoad, TheLogLineOfAFreshStartHasTheDefaults) {
    LoadSettings();
    EXPECT_EQ(g_log,
              std::vector<std::wstring>{
                  L"Loaded settings: intensity=0.385 brightness=1.000 extremeDim=0 legacy=0 pwmSafe=0"});
}

TEST_F(SettingsLoad, TheLogLineHasTheClampedValues) {
    Stored("[Filter]\r\nIntensity=1200\r\nBrightness=50\r\n[Settings]\r\nUseLegacyGamma=1\r\n");
    LoadSettings();
    EXPECT_EQ(g_log,
              std::vector<std::wstring>{
                  L"Loaded settings: intensity=1.000 brightness=0.100 extremeDim=0 legacy=1 pwmSafe=0"});
}

TEST_F(SettingsLoad, AnIntensityIsThousandthsClampedToOne) {
    EXPECT_EQ(Intensity("0"), 0.0);
    EXPECT_EQ(Intensity("1"), 0.001);
    EXPECT_EQ(Intensity("384"), 0.384);
    EXPECT_EQ(Intensity("1000"), 1.0);
    EXPECT_EQ(Intensity("1001"), 1.0);
    EXPECT_EQ(Intensity("1200"), 1.0);
    EXPECT_EQ(Intensity("2147483648"), 1.0);
    EXPECT_EQ(Intensity("4294967295"), 1.0);
}

TEST_F(SettingsLoad, ANegativeNumberIsReadUnsigned) {
    EXPECT_EQ(Intensity("-5"), 1.0);
    EXPECT_EQ(Intensity("-1"), 1.0);
    EXPECT_EQ(Brightness("-5"), 1.0);
    LoadWith("", "PWMSafeMode=-1");
    EXPECT_TRUE(g_app.pwmSafe);
}

TEST_F(SettingsLoad, AnEmptyValueReadsAsTheDefault) {
    EXPECT_EQ(Intensity(""), 0.385);
    EXPECT_EQ(Brightness(""), 1.0);
    LoadWith("", "LaunchAtStart=\r\nGammaFixEpoch=");
    EXPECT_EQ(Loaded(), kDefaults);
}

TEST_F(SettingsLoad, LettersReadAsZero) {
    EXPECT_EQ(Intensity("warm"), 0.0);
    EXPECT_EQ(Brightness("bright"), 0.1);
    EXPECT_EQ(Brightness("bright", "AllowExtremeDim=1"), 0.0);
    LoadWith("", "LaunchAtStart=yes\r\nPWMSafeMode=true\r\nUseLegacyGamma=on");
    EXPECT_EQ(Loaded(), kDefaults);
}

TEST_F(SettingsLoad, AFractionEndsAtItsPoint) {
    EXPECT_EQ(Intensity("384.9"), 0.384);
    EXPECT_EQ(Intensity("0.9"), 0.0);
    EXPECT_EQ(Brightness("850,5"), 0.85);
    LoadWith("", "PWMSafeMode=0.9");
    EXPECT_FALSE(g_app.pwmSafe);
}

TEST_F(SettingsLoad, ANumberEndsAtItsFirstLetter) {
    EXPECT_EQ(Intensity("585K"), 0.585);
    EXPECT_EQ(Brightness("700 percent"), 0.7);
}

TEST_F(SettingsLoad, ABrightnessIsThousandthsBetweenItsFloorAndOne) {
    EXPECT_EQ(Brightness("5000"), 1.0);
    EXPECT_EQ(Brightness("1000"), 1.0);
    EXPECT_EQ(Brightness("999"), 0.999);
    EXPECT_EQ(Brightness("101"), 0.101);
    EXPECT_EQ(Brightness("100"), 0.1);
    EXPECT_EQ(Brightness("99"), 0.1);
    EXPECT_EQ(Brightness("50"), 0.1);
    EXPECT_EQ(Brightness("0"), 0.1);
}

TEST_F(SettingsLoad, ExtremeDimLowersTheMinimumEvenLaterInTheFile) {
    EXPECT_EQ(Brightness("50", "AllowExtremeDim=1"), 0.05);
    EXPECT_EQ(Brightness("50", "AllowExtremeDim=0"), 0.1);
    EXPECT_EQ(Brightness("0", "AllowExtremeDim=1"), 0.0);
    EXPECT_EQ(Brightness("5000", "AllowExtremeDim=1"), 1.0);
}

TEST_F(SettingsLoad, AnExtremeDimFromBeforeTheLoadDoesNotLowerTheMinimum) {
    Stored("[Filter]\r\nBrightness=50\r\n");
    g_app.allowExtremeDim = true;
    LoadSettings();
    EXPECT_EQ(g_app.brightness, 0.1);
}

TEST_F(SettingsLoad, AnyOtherNumberThanZeroSetsAFlag) {
    LoadWith("", "LaunchAtStart=7\r\nAllowExtremeDim=2\r\nUseLegacyGamma=256\r\nPWMSafeMode=00");
    EXPECT_TRUE(g_app.launchAtStart);
    EXPECT_TRUE(g_app.allowExtremeDim);
    EXPECT_TRUE(g_app.useLegacyGamma);
    EXPECT_FALSE(g_app.pwmSafe);
}

TEST_F(SettingsLoad, AnEpochIsReadWith64Bits) {
    EXPECT_EQ(Epoch("0"), 0u);
    EXPECT_EQ(Epoch("1786700000"), 1786700000u);
    EXPECT_EQ(Epoch("4294967296"), 4294967296u);
    EXPECT_EQ(Epoch("9223372036854775808"), 9223372036854775808u);
    EXPECT_EQ(Epoch("18446744073709551615"), 18446744073709551615u);
}

TEST_F(SettingsLoad, AnEpochOfLettersIsZero) {
    EXPECT_EQ(Epoch("yesterday"), 0u);
    EXPECT_EQ(Epoch("x123"), 0u);
}

TEST_F(SettingsLoad, AnEpochEndsAtItsFirstNonDigit) {
    EXPECT_EQ(Epoch("123abc456"), 123u);
    EXPECT_EQ(Epoch("1786700000.9"), 1786700000u);
    EXPECT_EQ(Epoch("12 34"), 12u);
    EXPECT_EQ(Epoch("0x10"), 0u);
}

TEST_F(SettingsLoad, AnEpochWithAMinusSignIsZero) {
    EXPECT_EQ(Epoch("-5"), 0u);
}

TEST_F(SettingsLoad, AnEpochWithLeadingZerosIsDecimal) {
    EXPECT_EQ(Epoch("0000000000000000000000012"), 12u);
}

TEST_F(SettingsLoad, AnEpochLongerThanItsBufferDoesNoHarm) {
    Epoch(std::string(5000, '9'));
    EXPECT_EQ(g_app.intensity, 0.385);
    EXPECT_EQ(g_app.brightness, 1.0);
}

TEST_F(SettingsLoad, KeysAndSectionsAreFoundInAnyCase) {
    Stored("[FILTER]\r\nintensity=585\r\n[settings]\r\nPwmSafeMode=1\r\n");
    LoadSettings();
    EXPECT_EQ(g_app.intensity, 0.585);
    EXPECT_TRUE(g_app.pwmSafe);
}
