// Launch at start-up in the real registry.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/state/app_state.h"
#include "store/autostart.h"
#include "support/call_record.h"
#include "support/key_access.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);

namespace {

constexpr wchar_t kKey[] = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr wchar_t kValue[] = L"Ambrel2";

const CallRecord kSilent;
const CallRecord kMissing = {"log: Autostart entry missing (INI says ON) - restoring"};

std::wstring OwnPath() {
    wchar_t path[1024] = {};
    GetModuleFileNameW(nullptr, path, 1024);
    return path;
}

struct Stored {
    LSTATUS status = ERROR_SUCCESS;
    DWORD type = 0;
    std::vector<BYTE> data;
};

// Unchanged, even without the terminator that RegGetValueW would add.
Stored Read() {
    Stored stored;
    HKEY run = nullptr;
    stored.status = RegOpenKeyExW(HKEY_CURRENT_USER, kKey, 0, KEY_QUERY_VALUE, &run);
    if (stored.status != ERROR_SUCCESS) return stored;
    stored.data.resize(8192);
    auto size = static_cast<DWORD>(stored.data.size());
    stored.status = RegQueryValueExW(run, kValue, nullptr, &stored.type, stored.data.data(), &size);
    stored.data.resize(stored.status == ERROR_SUCCESS ? size : 0);
    RegCloseKey(run);
    return stored;
}

void Store(DWORD type, const void* data, std::size_t size) {
    ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, kKey, kValue, type, data, static_cast<DWORD>(size)),
              ERROR_SUCCESS);
}

void StoreText(DWORD type, const std::wstring& text) {
    Store(type, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

void ExpectThisProgramIsStored() {
    const std::wstring path = OwnPath();
    const BYTE* bytes = reinterpret_cast<const BYTE*>(path.c_str());
    const Stored stored = Read();
    ASSERT_EQ(stored.status, ERROR_SUCCESS);
    EXPECT_EQ(stored.type, 1U);
    EXPECT_EQ(stored.data, std::vector<BYTE>(bytes, bytes + 2 * (path.size() + 1)));
    EXPECT_NE(path.front(), L'"');
}

class AutostartRegistry : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_calls.clear();
        HKEY run = nullptr;
        ASSERT_EQ(
            RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &run, nullptr),
            ERROR_SUCCESS);
        RegDeleteValueW(run, kValue);
        RegCloseKey(run);
    }
    void TearDown() override { RegDeleteKeyValueW(HKEY_CURRENT_USER, kKey, kValue); }

    static void DeleteTheKey() {
        ASSERT_EQ(RegDeleteTreeW(HKEY_CURRENT_USER, kKey), ERROR_SUCCESS);
        ASSERT_EQ(Read().status, ERROR_FILE_NOT_FOUND);
    }

    // The value as the repair logs it.
    static CallRecord LogOfRepairing() {
        g_calls.clear();
        RepairAutostartEntry();
        return g_calls;
    }
};

}  // namespace

TEST_F(AutostartRegistry, OnWritesThePathAndOffDeletesIt) {
    SetAutostart(true);
    ExpectThisProgramIsStored();
    EXPECT_EQ(ReadAutostartValue(), OwnPath());
    EXPECT_TRUE(g_app.launchAtStart);
    SetAutostart(false);
    EXPECT_EQ(Read().status, ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(g_app.launchAtStart);
    SetAutostart(false);
    EXPECT_FALSE(g_app.launchAtStart);
    EXPECT_EQ(g_calls, kSilent);
}

TEST_F(AutostartRegistry, OtherProgramsEntriesAreLeftAlone) {
    ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, kKey, L"Ambrel", REG_SZ, L"other", 12), ERROR_SUCCESS);
    SetAutostart(true);
    SetAutostart(false);
    wchar_t text[16] = {};
    DWORD size = sizeof(text);
    EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, kKey, L"Ambrel", RRF_RT_REG_SZ, nullptr, text, &size),
              ERROR_SUCCESS);
    EXPECT_STREQ(text, L"other");
    RegDeleteKeyValueW(HKEY_CURRENT_USER, kKey, L"Ambrel");
}

TEST_F(AutostartRegistry, WithoutTheKeyNothingIsReadOrCreatedAndTheFlagFollowsTheRequest) {
    DeleteTheKey();
    EXPECT_EQ(ReadAutostartValue(), L"");
    SetAutostart(true);
    EXPECT_TRUE(g_app.launchAtStart);
    EXPECT_EQ(Read().status, ERROR_FILE_NOT_FOUND);
    SetAutostart(false);
    EXPECT_FALSE(g_app.launchAtStart);
    EXPECT_EQ(LogOfRepairing(), kSilent);
    EXPECT_FALSE(g_app.launchAtStart);
    g_app.launchAtStart = true;
    EXPECT_EQ(LogOfRepairing(), kMissing);
    EXPECT_TRUE(g_app.launchAtStart);
    EXPECT_EQ(Read().status, ERROR_FILE_NOT_FOUND);
}

TEST_F(AutostartRegistry, AKeyThatIsReadOnlyKeepsItsValueAndTheFlagFollowsTheRequest) {
    StoreText(REG_SZ, L"C:\\old\\ambrel.exe");
    const RestrictedKey readOnly(HKEY_CURRENT_USER, kKey, kReadOnlyAccess);
    ASSERT_EQ(readOnly.status, ERROR_SUCCESS);
    HKEY run = nullptr;
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, kKey, 0, KEY_SET_VALUE, &run), ERROR_ACCESS_DENIED);
    EXPECT_EQ(ReadAutostartValue(), L"C:\\old\\ambrel.exe");
    SetAutostart(false);
    EXPECT_FALSE(g_app.launchAtStart);
    EXPECT_EQ(LogOfRepairing(), (CallRecord{"log: Autostart entry pointed at 'C:\\old\\ambrel.exe' - "
                                            "rewriting to current exe"}));
    EXPECT_TRUE(g_app.launchAtStart);
    EXPECT_EQ(ReadAutostartValue(), L"C:\\old\\ambrel.exe");
}

TEST_F(AutostartRegistry, TextsAreReadUnchanged) {
    StoreText(REG_SZ, L"C:\\Pr\u00fcfung 1\\a.exe");
    EXPECT_EQ(ReadAutostartValue(), L"C:\\Pr\u00fcfung 1\\a.exe");
    StoreText(REG_EXPAND_SZ, L"%windir%\\a.exe");
    EXPECT_EQ(ReadAutostartValue(), L"%windir%\\a.exe");
    Store(REG_SZ, L"abcdef", 6);
    EXPECT_EQ(ReadAutostartValue(), L"abc") << "without a terminating zero";
    Store(REG_SZ, L"abcdef", 7);
    EXPECT_EQ(ReadAutostartValue(), L"abc") << "an odd number of bytes";
    Store(REG_SZ, L"", 0);
    EXPECT_EQ(ReadAutostartValue(), L"");
    StoreText(REG_SZ, std::wstring(1022, L'x'));
    EXPECT_EQ(ReadAutostartValue(), std::wstring(1022, L'x'));
    StoreText(REG_SZ, std::wstring(2047, L'x'));
    EXPECT_EQ(ReadAutostartValue(), L"") << "4 KB";
}

TEST_F(AutostartRegistry, ValuesThatAreNotTextReadAsEmptyAndAreReplaced) {
    const unsigned long long number = 1;
    for (const DWORD type : {REG_DWORD, REG_BINARY, REG_QWORD, REG_MULTI_SZ, REG_NONE}) {
        Store(type, &number, type == REG_DWORD ? 4 : 8);
        g_app.launchAtStart = false;
        EXPECT_EQ(ReadAutostartValue(), L"") << "type " << type;
        EXPECT_EQ(LogOfRepairing(), kMissing) << "type " << type;
        EXPECT_TRUE(g_app.launchAtStart);
        ExpectThisProgramIsStored();
    }
}

TEST_F(AutostartRegistry, TheRegistryTakesPrecedenceOverTheSetting) {
    EXPECT_EQ(LogOfRepairing(), kSilent);
    EXPECT_FALSE(g_app.launchAtStart);
    EXPECT_EQ(Read().status, ERROR_FILE_NOT_FOUND);

    g_app.launchAtStart = true;
    EXPECT_EQ(LogOfRepairing(), kMissing);
    ExpectThisProgramIsStored();

    g_app.launchAtStart = false;
    EXPECT_EQ(LogOfRepairing(), kSilent);
    EXPECT_TRUE(g_app.launchAtStart);
    ExpectThisProgramIsStored();
}

TEST_F(AutostartRegistry, AnEntryForAnotherCopyIsLoggedAndReplacedByThisProgram) {
    StoreText(REG_SZ, L"C:\\old\\ambrel.exe");
    EXPECT_EQ(LogOfRepairing(), (CallRecord{"log: Autostart entry pointed at 'C:\\old\\ambrel.exe' - "
                                            "rewriting to current exe"}));
    EXPECT_TRUE(g_app.launchAtStart);
    ExpectThisProgramIsStored();
}

TEST_F(AutostartRegistry, AnEntryInOtherLetterCaseIsRewrittenSilently) {
    std::wstring shouted = OwnPath();
    CharUpperBuffW(shouted.data(), static_cast<DWORD>(shouted.size()));
    ASSERT_NE(shouted, OwnPath());
    StoreText(REG_SZ, shouted);
    EXPECT_EQ(LogOfRepairing(), kSilent);
    ExpectThisProgramIsStored();
}

TEST_F(AutostartRegistry, AnEmptyOrOverlongEntryIsLoggedAsMissing) {
    StoreText(REG_SZ, L"");
    EXPECT_EQ(LogOfRepairing(), kMissing);
    ExpectThisProgramIsStored();
    StoreText(REG_SZ, std::wstring(2047, L'x'));
    g_app.launchAtStart = false;
    EXPECT_EQ(LogOfRepairing(), kMissing);
    EXPECT_TRUE(g_app.launchAtStart);
    ExpectThisProgramIsStored();
}
