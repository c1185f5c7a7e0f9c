// Every other text that the report reads from the registry, with the same defects in turn: missing key,
// missing value, another type, empty, unterminated, 4 KB, longer.
#include <gtest/gtest.h>

#include "diag/fake_registry.h"
#include "diag/system_probe.h"
#include "store/autostart.h"

namespace {

struct TextSource {
    const char* name;
    const wchar_t* key;
    const wchar_t* value;
    std::wstring (*read)();
    const wchar_t* unreadable;  // placeholder for a value that cannot be read
};

std::wstring ProductName() {
    return ReadOsInfo().productName;
}

std::wstring DisplayVersion() {
    return ReadOsInfo().displayVersion;
}

constexpr wchar_t kWindows[] = L"HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr wchar_t kBios[] = L"HKLM\\HARDWARE\\DESCRIPTION\\System\\BIOS";

const TextSource kSources[] = {
    {"ProductName", kWindows, L"ProductName", ProductName, L""},
    {"DisplayVersion", kWindows, L"DisplayVersion", DisplayVersion, L""},
    {"CpuName", L"HKLM\\HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0", L"ProcessorNameString",
     ReadCpuName, L"unknown"},
    {"Manufacturer", kBios, L"SystemManufacturer", ReadHardwareName, L"unknown"},
    {"SystemProduct", kBios, L"SystemProductName", ReadHardwareName, L"unknown"},
};

class RegistryTexts : public testing::TestWithParam<TextSource> {
protected:
    void SetUp() override { g_keys = FakeRegistry{}; }
    void TearDown() override { EXPECT_EQ(g_keys.closed, g_keys.opened.size()) << "each key is closed once"; }

    static std::wstring ReadOf(const RegistryValue& value) {
        g_keys.keys[GetParam().key] = {{GetParam().value, value}};
        return GetParam().read();
    }
};

class RevisionAndAutostart : public testing::Test {
protected:
    void SetUp() override { g_keys = FakeRegistry{}; }
    void TearDown() override { EXPECT_EQ(g_keys.closed, g_keys.opened.size()); }

    static std::wstring RevisionOf(const RegistryValue& value) {
        g_keys.keys[kWindows] = {{L"UBR", value}};
        return ReadOsInfo().updateRevision;
    }

    static std::wstring AutostartOf(const RegistryValue& value) {
        g_keys.keys[L"HKCU\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run"] = {{L"Ambrel2", value}};
        return ReadAutostartValue();
    }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(EachText, RegistryTexts, testing::ValuesIn(kSources),
                         [](const auto& source) { return std::string(source.param.name); });

TEST_P(RegistryTexts, AValidOneIsReadUnchanged) {
    EXPECT_EQ(ReadOf(RegistryText(L"Some Name 100% \u65e5")), L"Some Name 100% \u65e5");
}

TEST_P(RegistryTexts, WithoutItsKeyItIsUnreadable) {
    EXPECT_EQ(GetParam().read(), GetParam().unreadable);
}

TEST_P(RegistryTexts, WithoutItsValueItIsUnreadable) {
    g_keys.keys[GetParam().key] = {};
    EXPECT_EQ(GetParam().read(), GetParam().unreadable);
}

TEST_P(RegistryTexts, AValueOfAnotherTypeIsUnreadable) {
    EXPECT_EQ(ReadOf(RegistryNumber(7)), GetParam().unreadable);
    EXPECT_EQ(ReadOf(RegistryText(L"Some Name", REG_BINARY)), GetParam().unreadable);
    EXPECT_EQ(ReadOf(RegistryText(L"Some Name", REG_MULTI_SZ)), GetParam().unreadable);
    EXPECT_EQ(ReadOf(RegistryText(L"Some Name", REG_NONE)), GetParam().unreadable);
}

TEST_P(RegistryTexts, AnEmptyOneIsUnreadable) {
    EXPECT_EQ(ReadOf(RegistryText(L"")), GetParam().unreadable);
    EXPECT_EQ(ReadOf(UnterminatedText(L"")), GetParam().unreadable);
}

TEST_P(RegistryTexts, AnUnterminatedOneIsReadCompletely) {
    EXPECT_EQ(ReadOf(UnterminatedText(L"Some Name")), L"Some Name");
}

TEST_P(RegistryTexts, OneOf4KilobytesIsReadCompletely) {
    const std::wstring terminated = std::wstring(2046, L'N') + L"!";
    EXPECT_EQ(ReadOf(RegistryText(terminated)), terminated);
    const std::wstring unterminated = std::wstring(2047, L'N') + L"!";
    EXPECT_EQ(ReadOf(UnterminatedText(unterminated)), unterminated);
}

TEST_P(RegistryTexts, ALongerOneIsUnreadable) {
    EXPECT_EQ(ReadOf(RegistryText(std::wstring(2048, L'N'))), GetParam().unreadable);
    EXPECT_EQ(ReadOf(UnterminatedText(std::wstring(2049, L'N'))), GetParam().unreadable);
}

TEST_P(RegistryTexts, OneWhoseQueryWindowsRefusesIsUnreadable) {
    g_keys.queryAnswer = ERROR_ACCESS_DENIED;
    EXPECT_EQ(ReadOf(RegistryText(L"Some Name")), GetParam().unreadable);
}

TEST_F(RevisionAndAutostart, ARevisionIsADecimalNumber) {
    EXPECT_EQ(RevisionOf(RegistryNumber(4037)), L"4037");
    EXPECT_EQ(RevisionOf(RegistryNumber(0)), L"0");
}

TEST_F(RevisionAndAutostart, AMissingRevisionOrOneOfAnotherTypeIsNone) {
    EXPECT_EQ(ReadOsInfo().updateRevision, L"");
    g_keys.keys[kWindows] = {};
    EXPECT_EQ(ReadOsInfo().updateRevision, L"");
    EXPECT_EQ(RevisionOf(RegistryText(L"4037")), L"");
    EXPECT_EQ(RevisionOf({REG_QWORD, std::vector<BYTE>(8, 1)}), L"");
    EXPECT_EQ(RevisionOf({REG_BINARY, std::vector<BYTE>(4, 1)}), L"");
}

TEST_F(RevisionAndAutostart, ARevisionOf4KilobytesIsNone) {
    EXPECT_EQ(RevisionOf({REG_DWORD, std::vector<BYTE>(4096, 1)}), L"");
}

TEST_F(RevisionAndAutostart, AnAutostartEntryIsTextOfEitherKind) {
    EXPECT_EQ(AutostartOf(RegistryText(L"C:\\A.exe")), L"C:\\A.exe");
    EXPECT_EQ(AutostartOf(RegistryText(L"%A%\\A.exe", REG_EXPAND_SZ)), L"%A%\\A.exe");
    EXPECT_EQ(AutostartOf(UnterminatedText(L"C:\\A.exe")), L"C:\\A.exe");
}

TEST_F(RevisionAndAutostart, AMissingAutostartEntryOrOneOfAnotherTypeIsNone) {
    EXPECT_EQ(ReadAutostartValue(), L"");
    EXPECT_EQ(AutostartOf(RegistryNumber(1)), L"");
    EXPECT_EQ(AutostartOf(RegistryText(L"C:\\A.exe", REG_BINARY)), L"");
}

TEST_F(RevisionAndAutostart, AnAutostartEntryMayFillItsBufferAndALongerOneIsNone) {
    EXPECT_EQ(AutostartOf(RegistryText(std::wstring(1022, L'p'))), std::wstring(1022, L'p'));
    EXPECT_EQ(AutostartOf(UnterminatedText(std::wstring(1023, L'p'))), std::wstring(1023, L'p'));
    EXPECT_EQ(AutostartOf(RegistryText(std::wstring(1023, L'p'))), L"");
    EXPECT_EQ(AutostartOf(UnterminatedText(std::wstring(2048, L'p'))), L"");
}

TEST_F(RevisionAndAutostart, AnAutostartEntryWhoseQueryWindowsRefusesIsNone) {
    g_keys.queryAnswer = ERROR_ACCESS_DENIED;
    EXPECT_EQ(AutostartOf(RegistryText(L"C:\\A.exe")), L"");
}
