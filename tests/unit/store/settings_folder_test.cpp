// The real application-data folder of Windows.
#include <gtest/gtest.h>

#include <string>

#include "store/settings.h"
#include "store/temp_folder.h"

#include <shlobj.h>

TEST(SettingsFolder, TheFileIsInTheRoamingApplicationDataOfTheUser) {
    wchar_t roaming[MAX_PATH] = {};
    ASSERT_TRUE(SUCCEEDED(SHGetFolderPathW(nullptr, CSIDL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, roaming)));
    ASSERT_NE(roaming[0], L'\0');
    EXPECT_EQ(GetSettingsPath(), std::wstring(roaming) + L"\\Ambrel2\\settings.ini");
    EXPECT_TRUE(FileExists(std::wstring(roaming) + L"\\Ambrel2"));
}

TEST(SettingsFolder, AnExistingFolderGivesTheSamePath) {
    const std::wstring first = GetSettingsPath();
    EXPECT_EQ(GetSettingsPath(), first);
}
