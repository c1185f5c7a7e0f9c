// Invalid settings files and paths: nothing crashes, readable keys are used, the others get their defaults.
#include "store/settings_fixture.h"

namespace {

using settings_fixture::g_log;
using settings_fixture::kDefaults;
using settings_fixture::Loaded;

constexpr wchar_t kSaved[] = L"Saved settings";

class SettingsBadFile : public settings_fixture::SettingsTest {
protected:
    static std::string Noise(std::size_t size) {
        std::string bytes(size, '\0');
        std::uint32_t state = 12345;
        for (char& c : bytes) {
            state = state * 1664525u + 1013904223u;
            c = static_cast<char>(state >> 24);
        }
        return bytes;
    }

    static std::string Utf16(const std::wstring& text) {
        std::string bytes = "\xFF\xFE";
        bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
        return bytes;
    }

    // A later save and load works, regardless of the file.
    static void ExpectAChoiceSurvives() {
        g_app.intensity = 0.123;
        g_app.pwmSafe = true;
        SaveSettings();
        Reload();
        EXPECT_EQ(g_app.intensity, 0.123);
        EXPECT_TRUE(g_app.pwmSafe);
    }
};

}  // namespace

TEST_F(SettingsBadFile, AnEmptyFileGivesTheDefaults) {
    Stored("");
    LoadSettings();
    EXPECT_EQ(Loaded(), kDefaults);
    ExpectAChoiceSurvives();
}

TEST_F(SettingsBadFile, AFileWithoutSectionsGivesTheDefaults) {
    Stored("Intensity=900\r\nPWMSafeMode=1\r\n");
    LoadSettings();
    EXPECT_EQ(Loaded(), kDefaults);
}

TEST_F(SettingsBadFile, AFileTruncatedInsideANumberYieldsTheRemainingDigits) {
    Stored("[Filter]\r\nIntensity=585\r\nBrightness=85");
    LoadSettings();
    EXPECT_EQ(g_app.intensity, 0.585);
    EXPECT_EQ(g_app.brightness, 0.1);
    EXPECT_FALSE(g_app.pwmSafe);
}

TEST_F(SettingsBadFile, AFileTruncatedInsideAKeyGivesItsDefault) {
    Stored("[Filter]\r\nIntensity=585\r\nBright");
    LoadSettings();
    EXPECT_EQ(g_app.intensity, 0.585);
    EXPECT_EQ(g_app.brightness, 1.0);
}

TEST_F(SettingsBadFile, AFileTruncatedInsideASectionGivesTheDefaults) {
    Stored("[Filt");
    LoadSettings();
    EXPECT_EQ(Loaded(), kDefaults);
}

TEST_F(SettingsBadFile, TenMegabytesOfNoiseGiveTheDefaults) {
    Stored(Noise(10 * 1024 * 1024));
    LoadSettings();
    EXPECT_EQ(Loaded(), kDefaults);
}

TEST_F(SettingsBadFile, BinaryBytesAroundTheKeysAreIgnored) {
    Stored(std::string("\x01\x02\x7F\xFE\r\n[Filter]\r\nIntensity=\x80\xFF\x01\r\nBrightness=700\r\n\x03\r\n",
                       54));
    LoadSettings();
    EXPECT_EQ(g_app.intensity, 0.0);
    EXPECT_EQ(g_app.brightness, 0.7);
}

TEST_F(SettingsBadFile, AFileOfZerosGivesTheDefaults) {
    Stored(std::string(4096, '\0'));
    LoadSettings();
    EXPECT_EQ(Loaded(), kDefaults);
}

TEST_F(SettingsBadFile, ALineOf100000CharactersDoesNotAffectTheOtherKeys) {
    Stored("[Filter]\r\nIntensity=585" + std::string(100000, 'x') + "\r\nBrightness=700\r\n");
    LoadSettings();
    EXPECT_EQ(g_app.intensity, 0.585);
    EXPECT_EQ(g_app.brightness, 0.7);
}

TEST_F(SettingsBadFile, AUtf16FileWithItsByteOrderMarkIsReadAndWritten) {
    Stored(Utf16(L"[Filter]\r\nIntensity=585\r\nBrightness=850\r\n[Settings]\r\nLaunchAtStart=1\r\n"));
    LoadSettings();
    EXPECT_EQ(g_app.intensity, 0.585);
    EXPECT_EQ(g_app.brightness, 0.85);
    EXPECT_TRUE(g_app.launchAtStart);
    ExpectAChoiceSurvives();
}

TEST_F(SettingsBadFile, AFolderOfThatNameGivesTheDefaultsAndStays) {
    ASSERT_TRUE(CreateDirectoryW(folder.c_str(), nullptr));
    ASSERT_TRUE(CreateDirectoryW(path.c_str(), nullptr));
    LoadSettings();
    EXPECT_EQ(Loaded(), kDefaults);
    g_log.clear();
    SaveSettings();
    EXPECT_EQ(g_log, std::vector<std::wstring>{kSaved});
    EXPECT_EQ(GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_DIRECTORY,
              static_cast<DWORD>(FILE_ATTRIBUTE_DIRECTORY));
}

TEST_F(SettingsBadFile, AFileInThePlaceOfTheFolderGivesTheDefaultsAndStays) {
    WriteBytes(folder, "not a folder");
    LoadSettings();
    EXPECT_EQ(Loaded(), kDefaults);
    SaveSettings();
    EXPECT_EQ(ReadBytes(folder), "not a folder");
}

TEST_F(SettingsBadFile, AFileLockedByAnotherProgramIsNeitherReadNorChanged) {
    const std::string stored = "[Filter]\r\nIntensity=585\r\n";
    Stored(stored);
    {
        const LockedFile lock(path);
        LoadSettings();
        EXPECT_EQ(Loaded(), kDefaults);
        g_log.clear();
        SaveSettings();
        EXPECT_EQ(g_log, std::vector<std::wstring>{kSaved});
    }
    EXPECT_EQ(ReadBytes(path), stored);
    Reload();
    EXPECT_EQ(g_app.intensity, 0.585);
}

TEST_F(SettingsBadFile, AFileWithReadOnlyAccessIsReadAndKeepsItsBytes) {
    const std::string stored = "[Filter]\r\nIntensity=585\r\n";
    Stored(stored);
    {
        const LockedFile lock(path, FILE_SHARE_READ);
        LoadSettings();
        EXPECT_EQ(g_app.intensity, 0.585);
        g_app.intensity = 0.1;
        g_log.clear();
        SaveSettings();
        EXPECT_EQ(g_log, std::vector<std::wstring>{kSaved});
    }
    EXPECT_EQ(ReadBytes(path), stored);
}

// Whether the write is refused depends on the user: under Wine, root may write.
TEST_F(SettingsBadFile, AFileMarkedReadOnlyIsReadAndDoesNotStopTheSave) {
    Stored("[Filter]\r\nIntensity=585\r\n");
    ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
    LoadSettings();
    EXPECT_EQ(g_app.intensity, 0.585);
    g_log.clear();
    SaveSettings();
    EXPECT_EQ(g_log, std::vector<std::wstring>{kSaved});
    Reload();
    EXPECT_EQ(g_app.intensity, 0.585);
}

TEST_F(SettingsBadFile, AFolderThatDisappearsDoesNotStopTheSave) {
    LoadSettings();
    ASSERT_TRUE(RemoveDirectoryW(folder.c_str()));
    g_log.clear();
    SaveSettings();
    EXPECT_EQ(g_log, std::vector<std::wstring>{kSaved});
}
