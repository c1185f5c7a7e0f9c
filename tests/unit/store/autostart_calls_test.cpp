// Launch at start-up: the registry calls.
#include <gtest/gtest.h>

#include <algorithm>

#include "app/state/app_state.h"
#include "store/autostart.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/recorded_registry.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);

AMBREL_REPLACE(void, SaveSettings, ()) {
    Record("save settings");
}

namespace {

std::wstring g_ownPath;

// The C runtime also calls it, before the objects of the test are constructed.
DWORD WINAPI FakeGetModuleFileName(HMODULE module, wchar_t* path, DWORD capacity) {
    if (g_ownPath.empty()) return 0;
    EXPECT_EQ(module, nullptr);
    EXPECT_EQ(capacity, 260U);
    // Like older Windows, truncates without a terminator.
    return static_cast<DWORD>(g_ownPath.copy(path, capacity));
}

const std::string kOpenToQuery =
    "open HKCU SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run options 0 access 0x1";
const std::string kOpenToSet =
    "open HKCU SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run options 0 access 0x2";
const std::string kQueryText = "query Ambrel2 into 2046 bytes";
const std::string kQueryExistence = "query Ambrel2 without a buffer";
// "C:\a.exe" with its terminating zero.
const std::string kSet = "set Ambrel2 type 1 43003a005c0061002e006500780065000000";
const std::string kMissing = "log: Autostart entry missing (INI says ON) - restoring";

class AutostartCalls : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_calls.clear();
        g_registry = RecordedRegistry{};
        g_ownPath = L"C:\\a.exe";
    }
    void TearDown() override {
        EXPECT_EQ(g_registry.openKeys, 0) << "a key is left open";
        g_ownPath.clear();
    }

    // As many characters, without a terminating zero.
    static void StoreUnterminated(DWORD type, std::size_t characters) {
        std::vector<BYTE> data(2 * characters);
        for (std::size_t i = 0; i < data.size(); i += 2)
            data[i] = 'x';
        StoreValue(type, data);
    }

    static CallRecord CallsOfRepairing() {
        g_calls.clear();
        RepairAutostartEntry();
        return g_calls;
    }
};

class AutostartRepair : public AutostartCalls {
protected:
    static CallRecord Repaired(const std::string& log) {
        CallRecord calls = {kOpenToQuery, kQueryExistence, "close", kOpenToQuery, kQueryText, "close"};
        if (!log.empty()) calls.push_back(log);
        calls.insert(calls.end(), {kOpenToSet, kSet, "close"});
        return calls;
    }
};

}  // namespace

AMBREL_SEAM(GetModuleFileNameW, FakeGetModuleFileName);

TEST_F(AutostartCalls, ATextIsReadIntoABufferWithRoomForATerminator) {
    StoreText(REG_SZ, L"C:\\a.exe");
    EXPECT_EQ(ReadAutostartValue(), L"C:\\a.exe");
    EXPECT_EQ(g_calls, (CallRecord{kOpenToQuery, kQueryText, "close"}));
}

TEST_F(AutostartCalls, AnExpandableTextIsReadUnexpanded) {
    StoreText(REG_EXPAND_SZ, L"%windir%\\a.exe");
    EXPECT_EQ(ReadAutostartValue(), L"%windir%\\a.exe");
}

TEST_F(AutostartCalls, AValueOfAnyOtherTypeReadsAsEmpty) {
    for (const DWORD type :
         {REG_NONE, REG_BINARY, REG_DWORD, REG_DWORD_BIG_ENDIAN, REG_LINK, REG_MULTI_SZ, REG_QWORD}) {
        StoreText(type, L"C:\\a.exe");
        EXPECT_EQ(ReadAutostartValue(), L"") << "type " << type;
    }
}

TEST_F(AutostartCalls, AMissingValueOrKeyReadsAsEmpty) {
    EXPECT_EQ(ReadAutostartValue(), L"");
    EXPECT_EQ(g_calls, (CallRecord{kOpenToQuery, kQueryText, "close"}));
    g_calls.clear();
    StoreText(REG_SZ, L"C:\\a.exe");
    g_registry.openToQuery = ERROR_FILE_NOT_FOUND;
    EXPECT_EQ(ReadAutostartValue(), L"");
    EXPECT_EQ(g_calls, (CallRecord{kOpenToQuery})) << "and what was not opened is not closed";
}

TEST_F(AutostartCalls, AQueryThatFailsReadsAsEmptyAndTheKeyIsClosed) {
    StoreText(REG_SZ, L"C:\\a.exe");
    g_registry.query = ERROR_ACCESS_DENIED;
    EXPECT_EQ(ReadAutostartValue(), L"");
    EXPECT_EQ(g_calls, (CallRecord{kOpenToQuery, kQueryText, "close"}));
}

TEST_F(AutostartCalls, AnUnterminatedTextEndsWithItsLastCharacter) {
    StoreUnterminated(REG_SZ, 5);
    EXPECT_EQ(ReadAutostartValue(), L"xxxxx");
    StoreUnterminated(REG_EXPAND_SZ, 1);
    EXPECT_EQ(ReadAutostartValue(), L"x");
}

TEST_F(AutostartCalls, ATextThatFillsTheBufferIsReadAndTerminated) {
    StoreUnterminated(REG_SZ, 1023);
    EXPECT_EQ(ReadAutostartValue(), std::wstring(1023, L'x'));
    StoreText(REG_SZ, std::wstring(1022, L'y'));
    EXPECT_EQ(ReadAutostartValue(), std::wstring(1022, L'y'));
}

TEST_F(AutostartCalls, ATextLargerThanTheBufferReadsAsEmpty) {
    StoreUnterminated(REG_SZ, 1024);
    EXPECT_EQ(ReadAutostartValue(), L"");
    StoreText(REG_SZ, std::wstring(1023, L'y'));
    EXPECT_EQ(ReadAutostartValue(), L"");
    StoreUnterminated(REG_SZ, 2048);
    EXPECT_EQ(ReadAutostartValue(), L"") << "4 KB";
}

TEST_F(AutostartCalls, AnOddByteAtTheEndOfATextIsDropped) {
    StoreValue(REG_SZ, {'a', 0, 'b', 0, 'c'});
    EXPECT_EQ(ReadAutostartValue(), L"ab");
    StoreValue(REG_SZ, {'a'});
    EXPECT_EQ(ReadAutostartValue(), L"");
}

TEST_F(AutostartCalls, AnEmptyTextReadsAsEmpty) {
    StoreText(REG_SZ, L"");
    EXPECT_EQ(ReadAutostartValue(), L"");
    StoreValue(REG_SZ, {});
    EXPECT_EQ(ReadAutostartValue(), L"");
}

TEST_F(AutostartCalls, ATextEndsAtItsFirstZero) {
    StoreText(REG_SZ, std::wstring(L"C:\\a.exe\0tail", 13));
    EXPECT_EQ(ReadAutostartValue(), L"C:\\a.exe");
}

TEST_F(AutostartCalls, OnWritesTheProgramsPathWithItsTerminatingZero) {
    SetAutostart(true);
    EXPECT_EQ(g_calls, (CallRecord{kOpenToSet, kSet, "close"}));
    EXPECT_TRUE(g_app.launchAtStart);
}

TEST_F(AutostartCalls, APathWithSpacesAndAccentsIsWrittenWithoutQuotesOrArguments) {
    g_ownPath = L"C:\\Meine \u00fcbrigen Dateien\\ambrel.exe";
    SetAutostart(true);
    EXPECT_EQ(g_registry.type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(g_registry.data.size(), 2 * (35U + 1)) << "35 characters and the zero";
    EXPECT_EQ(ReadAutostartValue(), g_ownPath);
}

TEST_F(AutostartCalls, APathOf259CharactersIsWrittenCompletely) {
    g_ownPath = L"C:\\" + std::wstring(256, L'p');
    SetAutostart(true);
    EXPECT_EQ(g_registry.data.size(), 2 * 260U);
    EXPECT_EQ(ReadAutostartValue(), g_ownPath);
}

TEST_F(AutostartCalls, ALongerPathIsNotWrittenAndTheFlagFollowsTheRequest) {
    StoreText(REG_SZ, L"C:\\a.exe");
    for (const std::size_t length : {257U, 400U}) {
        g_ownPath = L"C:\\" + std::wstring(length, L'p');
        g_app.launchAtStart = false;
        g_calls.clear();
        SetAutostart(true);
        EXPECT_EQ(g_calls, (CallRecord{kOpenToSet, "close"})) << length;
        EXPECT_TRUE(g_app.launchAtStart);
    }
    EXPECT_EQ(ReadAutostartValue(), L"C:\\a.exe");
}

TEST_F(AutostartCalls, OffDeletesTheValue) {
    StoreText(REG_SZ, L"C:\\a.exe");
    g_app.launchAtStart = true;
    SetAutostart(false);
    EXPECT_EQ(g_calls, (CallRecord{kOpenToSet, "delete Ambrel2", "close"}));
    EXPECT_FALSE(g_registry.valueExists);
    EXPECT_FALSE(g_app.launchAtStart);
}

TEST_F(AutostartCalls, TheFlagFollowsTheRequestRegardlessOfTheRegistry) {
    for (const bool on : {true, false}) {
        g_registry = RecordedRegistry{};
        g_registry.set = ERROR_ACCESS_DENIED;
        g_registry.remove = ERROR_ACCESS_DENIED;
        g_app.launchAtStart = !on;
        SetAutostart(on);
        EXPECT_EQ(g_app.launchAtStart, on);

        g_registry.openToSet = ERROR_ACCESS_DENIED;
        g_app.launchAtStart = !on;
        g_calls.clear();
        SetAutostart(on);
        EXPECT_EQ(g_app.launchAtStart, on);
        EXPECT_EQ(g_calls, (CallRecord{kOpenToSet})) << "nothing logged, nothing closed";
    }
}

TEST_F(AutostartCalls, AWriteOrDeletionThatFailsIsSilentAndTheKeyIsClosed) {
    g_registry.set = ERROR_ACCESS_DENIED;
    SetAutostart(true);
    EXPECT_EQ(g_calls, (CallRecord{kOpenToSet, kSet, "close"}));
    g_calls.clear();
    g_registry.remove = ERROR_FILE_NOT_FOUND;
    SetAutostart(false);
    EXPECT_EQ(g_calls, (CallRecord{kOpenToSet, "delete Ambrel2", "close"}));
}

TEST_F(AutostartCalls, SettingTwiceWritesTwice) {
    SetAutostart(true);
    SetAutostart(true);
    EXPECT_EQ(g_calls, (CallRecord{kOpenToSet, kSet, "close", kOpenToSet, kSet, "close"}));
}

TEST_F(AutostartRepair, WithFlagOffAndNoValueNothingHappens) {
    EXPECT_EQ(CallsOfRepairing(), (CallRecord{kOpenToQuery, kQueryExistence, "close"}));
    EXPECT_FALSE(g_app.launchAtStart);
    EXPECT_FALSE(g_registry.valueExists);
}

TEST_F(AutostartRepair, WithFlagOffAndNoKeyNothingHappens) {
    g_registry.openToQuery = ERROR_FILE_NOT_FOUND;
    EXPECT_EQ(CallsOfRepairing(), (CallRecord{kOpenToQuery}));
    EXPECT_FALSE(g_app.launchAtStart);
}

TEST_F(AutostartRepair, WithFlagOnAMissingValueIsRestored) {
    g_app.launchAtStart = true;
    EXPECT_EQ(CallsOfRepairing(), Repaired(kMissing));
    EXPECT_TRUE(g_app.launchAtStart);
    EXPECT_EQ(ReadAutostartValue(), L"C:\\a.exe");
}

TEST_F(AutostartRepair, WithFlagOnAKeyThatCannotBeOpenedIsTreatedAsAMissingValue) {
    g_app.launchAtStart = true;
    g_registry.openToQuery = ERROR_ACCESS_DENIED;
    g_registry.openToSet = ERROR_ACCESS_DENIED;
    EXPECT_EQ(CallsOfRepairing(), (CallRecord{kOpenToQuery, kOpenToQuery, kMissing, kOpenToSet}));
    EXPECT_TRUE(g_app.launchAtStart);
}

TEST_F(AutostartRepair, AReadOnlyKeyIsTriedAndTheFlagIsStillSet) {
    StoreText(REG_SZ, L"C:\\A.EXE");
    g_registry.openToSet = ERROR_ACCESS_DENIED;
    EXPECT_EQ(CallsOfRepairing(), (CallRecord{kOpenToQuery, kQueryExistence, "close", kOpenToQuery,
                                              kQueryText, "close", kOpenToSet}));
    EXPECT_TRUE(g_app.launchAtStart);

    g_app.launchAtStart = false;
    g_registry.openToSet = ERROR_SUCCESS;
    g_registry.set = ERROR_ACCESS_DENIED;
    EXPECT_EQ(CallsOfRepairing(), Repaired(""));
    EXPECT_TRUE(g_app.launchAtStart);
}

TEST_F(AutostartRepair, AValueForThisProgramIsRewrittenSilently) {
    StoreText(REG_SZ, L"C:\\a.exe");
    g_app.launchAtStart = true;
    EXPECT_EQ(CallsOfRepairing(), Repaired(""));
}

TEST_F(AutostartRepair, AValueInOtherLetterCaseIsRewrittenSilently) {
    g_ownPath = L"C:\\Pr\u00dcfung\\Ambrel.exe";
    StoreText(REG_SZ, L"c:\\PR\u00fcFUNG\\aMBREL.EXE");
    RepairAutostartEntry();
    EXPECT_TRUE(std::none_of(g_calls.begin(), g_calls.end(),
                             [](const std::string& call) { return call.starts_with("log:"); }));
    EXPECT_EQ(ReadAutostartValue(), g_ownPath);
}

TEST_F(AutostartRepair, AValueForAnotherFolderIsLoggedAndRewritten) {
    StoreText(REG_SZ, L"D:\\old copies\\ambrel.exe");
    EXPECT_EQ(CallsOfRepairing(), Repaired("log: Autostart entry pointed at 'D:\\old copies\\ambrel.exe' - "
                                           "rewriting to current exe"));
    EXPECT_TRUE(g_app.launchAtStart);
    EXPECT_EQ(ReadAutostartValue(), L"C:\\a.exe");
}

TEST_F(AutostartRepair, QuotesOrArgumentsMakeItAnotherPath) {
    StoreText(REG_SZ, L"\"C:\\a.exe\"");
    EXPECT_EQ(CallsOfRepairing(),
              Repaired("log: Autostart entry pointed at '\"C:\\a.exe\"' - rewriting to current exe"));
    StoreText(REG_SZ, L"C:\\a.exe /quiet");
    EXPECT_EQ(CallsOfRepairing(),
              Repaired("log: Autostart entry pointed at 'C:\\a.exe /quiet' - rewriting to current exe"));
}

TEST_F(AutostartRepair, AnExpandableTextIsComparedUnexpandedAndBecomesAPlainOne) {
    StoreText(REG_EXPAND_SZ, L"%SystemDrive%\\a.exe");
    EXPECT_EQ(CallsOfRepairing(), Repaired("log: Autostart entry pointed at '%SystemDrive%\\a.exe' - "
                                           "rewriting to current exe"));
    EXPECT_EQ(g_registry.type, static_cast<DWORD>(REG_SZ));
}

TEST_F(AutostartRepair, WithFlagOffAValueThatExistsTurnsItOn) {
    StoreText(REG_SZ, L"C:\\a.exe");
    EXPECT_EQ(CallsOfRepairing(), Repaired(""));
    EXPECT_TRUE(g_app.launchAtStart);
}

TEST_F(AutostartRepair, AnEmptyValueIsLoggedAsMissingEvenWithTheFlagOff) {
    StoreText(REG_SZ, L"");
    EXPECT_EQ(CallsOfRepairing(), Repaired(kMissing));
    EXPECT_TRUE(g_app.launchAtStart);
    StoreValue(REG_SZ, {});
    g_app.launchAtStart = false;
    EXPECT_EQ(CallsOfRepairing(), Repaired(kMissing));
}

TEST_F(AutostartRepair, ANumberIsReplacedByAText) {
    StoreNumber(1);
    EXPECT_EQ(CallsOfRepairing(), Repaired(kMissing));
    EXPECT_TRUE(g_app.launchAtStart);
    EXPECT_EQ(ReadAutostartValue(), L"C:\\a.exe");
}

TEST_F(AutostartRepair, FourKilobytesOfTextAreLoggedAsMissingAndReplaced) {
    StoreUnterminated(REG_SZ, 2048);
    EXPECT_EQ(CallsOfRepairing(), Repaired(kMissing));
    EXPECT_EQ(ReadAutostartValue(), L"C:\\a.exe");
}

TEST_F(AutostartRepair, AnUnterminatedTextIsLoggedUpToItsEnd) {
    StoreUnterminated(REG_SZ, 3);
    EXPECT_EQ(CallsOfRepairing(),
              Repaired("log: Autostart entry pointed at 'xxx' - rewriting to current exe"));
}
