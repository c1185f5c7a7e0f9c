// The record of the displays' own brightness, from the first lock to the next start. The record is in a real
// file; the displays are fakes. The calls also contain
//
//     write 1            a row of the record is written under this number
//     delete 1           and deleted; "delete section" deletes the last one with its section
//     flush              the file is flushed to the disk
#include "brightness/saved_brightness.h"

#include <algorithm>
#include <ctime>
#include <utility>

#include "app/state/messages.h"
#include "brightness/pwm_fixture.h"
#include "brightness/pwm_release.h"
#include "store/restore_record.h"
#include "store/temp_folder.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);

namespace {

const std::wstring kFirst = L"DXVA2:\\\\.\\DISPLAY1#0";
const std::wstring kSecond = L"DXVA2:\\\\.\\DISPLAY2#0";
const std::wstring kPanel = L"DISPLAY\\BOE07D8\\4&2c&0_0";
constexpr std::uint64_t kDay = 86400;

struct FakeMonitorDevice {
    std::wstring path;
    DWORD state = DISPLAY_DEVICE_ACTIVE;
};

std::map<std::wstring, std::vector<FakeMonitorDevice>> g_monitorDevices;  // by device name
DWORD g_windowThread = 0;
std::function<void()> g_onWrite;

BOOL WINAPI FakeEnumDisplayDevicesW(LPCWSTR device, DWORD index, DISPLAY_DEVICEW* found, DWORD flags) {
    EXPECT_EQ(found->cb, sizeof(*found));
    EXPECT_EQ(flags, static_cast<DWORD>(EDD_GET_DEVICE_INTERFACE_NAME));
    const auto devices = g_monitorDevices.find(device);
    if (devices == g_monitorDevices.end() || index >= devices->second.size()) return FALSE;
    const FakeMonitorDevice& monitor = devices->second[index];
    found->DeviceID[monitor.path.copy(found->DeviceID, 127)] = L'\0';
    found->StateFlags = monitor.state;
    return TRUE;
}

BOOL WINAPI FakeWritePrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR value, LPCWSTR path) {
    EXPECT_EQ(GetCurrentThreadId(), g_windowThread);
    EXPECT_STREQ(section, L"Restore");
    if (g_onWrite) g_onWrite();
    Record(value != nullptr ? "write " : "delete ", key != nullptr ? Narrow(key) : "section");
    return Real(&WritePrivateProfileStringW)(section, key, value, path);
}

BOOL WINAPI FakeFlushFileBuffers(HANDLE) {
    Record("flush");
    return TRUE;
}

BOOL WINAPI FakePostMessageW(HWND, UINT, WPARAM, LPARAM) {
    return TRUE;
}

std::uint64_t Now() {
    return static_cast<std::uint64_t>(std::time(nullptr));
}

class SavedBrightnessTest : public PwmFixture {
protected:
    TempFolder folder;
    std::wstring path = folder.Child(L"settings.ini");

    void SetUp() override {
        PwmFixture::SetUp();
        g_app.settingsPath = path;
        g_windowThread = GetCurrentThreadId();
        g_onWrite = nullptr;
        WriteBytes(path, "[Settings]\r\nPWMSafeMode=0\r\n");
        g_monitorDevices = {{L"\\\\.\\DISPLAY1", {{.path = L"path-1"}}},
                            {L"\\\\.\\DISPLAY2", {{.path = L"path-2"}}}};
        g_displays = {{.name = kPanel, .percent = 45, .kind = TargetKind::WmiPanel},
                      {.name = kFirst, .percent = 30},
                      {.name = kSecond, .percent = 60}};
    }

    bool HasRecord() const { return ReadBytes(path).find("[Restore]") != std::string::npos; }

    // A new process on the same file and displays.
    void Start(bool mode) {
        g_whileWaiting = nullptr;
        g_app = AppState{};
        g_app.mainWindow = MakeHandle<HWND>(0x1234);
        g_app.settingsPath = path;
        g_app.pwmSafe = mode;
        g_calls.clear();
        g_sets.clear();
        RestorePwmSafeFromSettings();
    }

    static void Quit() {
        g_app.ending = true;
        SuspendPwmSafe();
        ReleasePwmSafeLock();
    }

    // The first display is locked and the process was killed.
    void KillLocked() {
        TogglePwmSafeByUser();
        ASSERT_EQ(Display(kFirst).percent, 100U);
        ASSERT_TRUE(HasRecord());
    }

    static void LeaveOnly(const std::wstring& name) {
        std::erase_if(g_displays, [&](const FakeDisplay& display) { return display.name != name; });
    }

    static CallRecord RecordCalls(const CallRecord& calls) {
        CallRecord left = calls;
        std::erase_if(left, [](const std::string& call) {
            return call.rfind("write", 0) != 0 && call.rfind("delete", 0) != 0 && call != "flush" &&
                   call.find(":=") == std::string::npos;
        });
        return left;
    }

    static std::vector<std::wstring> RecordedNames() {
        std::vector<std::wstring> names;
        for (const auto& [number, row] : ReadRestoreRows())
            names.push_back(row.name);
        std::sort(names.begin(), names.end());
        return names;
    }

    static void Store(int number, const RestoreRow& row) { WriteRestoreRow(number, row); }
};

}  // namespace

AMBREL_SEAM(EnumDisplayDevicesW, FakeEnumDisplayDevicesW);
AMBREL_SEAM(WritePrivateProfileStringW, FakeWritePrivateProfileStringW);
AMBREL_SEAM(FlushFileBuffers, FakeFlushFileBuffers);
AMBREL_SEAM(PostMessageW, FakePostMessageW);

TEST_F(SavedBrightnessTest, EachRowIsOnTheDiskBeforeTheFirstCommandToItsDisplay) {
    EXPECT_EQ(RecordCalls(During([] { TogglePwmSafeByUser(); })),
              (CallRecord{"write 1", "flush", Narrow(kPanel) + " := 100", "write 2", "flush",
                          Narrow(kFirst) + " := 100", "write 3", "flush", Narrow(kSecond) + " := 100"}));
    const RestoreRows rows = ReadRestoreRows();
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows.at(1).path, L"");
    EXPECT_EQ(rows.at(2).name, kFirst);
    EXPECT_EQ(rows.at(2).path, L"path-1");
    EXPECT_EQ(rows.at(2).percent, 30U);
    EXPECT_EQ(rows.at(2).awaySince, 0U);
}

TEST_F(SavedBrightnessTest, AReassertionNeitherReadsNorWritesTheRecord) {
    TogglePwmSafeByUser();
    VerifyPwmLock();
    Display(kFirst).percent = 50;
    DeleteFileW(path.c_str());
    EXPECT_EQ(
        RecordCalls(During([] { RefreshPwmSafeTargets(true); })),
        (CallRecord{Narrow(kPanel) + " := 100", Narrow(kFirst) + " := 100", Narrow(kSecond) + " := 100"}));
    EXPECT_FALSE(FileExists(path));
}

TEST_F(SavedBrightnessTest, ARowGoesOnceItsDisplayHasItsValueBackAndTheLastTakesTheSection) {
    TogglePwmSafeByUser();
    EXPECT_EQ(RecordCalls(During([] { TogglePwmSafeByUser(); })),
              (CallRecord{Narrow(kPanel) + " := 45", Narrow(kFirst) + " := 30", Narrow(kSecond) + " := 60",
                          "delete 1", "delete 2", "delete section"}));
    EXPECT_FALSE(HasRecord());
}

TEST_F(SavedBrightnessTest, TheEndOfTheProgramLeavesNoRecord) {
    TogglePwmSafeByUser();
    Quit();
    EXPECT_FALSE(HasRecord());
}

TEST_F(SavedBrightnessTest, ARevertedToggleLeavesNoRecord) {
    Display(kSecond).ignores = true;
    TogglePwmSafeByUser();
    VerifyPwmLock();
    EXPECT_FALSE(g_app.pwmSafe);
    EXPECT_FALSE(HasRecord());
}

TEST_F(SavedBrightnessTest, TheRowsOfADisplayThatIsAwayAndOfOneThatRefusesStay) {
    TogglePwmSafeByUser();
    Display(kFirst).refuses = true;
    Display(kSecond).present = false;
    TogglePwmSafeByUser();
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty());
    EXPECT_EQ(RecordedNames(), (std::vector<std::wstring>{kFirst, kSecond}));
}

TEST_F(SavedBrightnessTest, AfterAKillAStartWithTheModeOffRestoresEveryDisplayImmediately) {
    KillLocked();
    Start(false);
    EXPECT_EQ(g_sets.size(), 3U);
    EXPECT_EQ(Display(kPanel).percent, 45U);
    EXPECT_EQ(Display(kFirst).percent, 30U);
    EXPECT_EQ(Display(kSecond).percent, 60U);
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty());
    EXPECT_EQ(g_app.pwmTargetsAt100, 0) << "the counts are those from before the release";
    EXPECT_FALSE(HasRecord());
}

TEST_F(SavedBrightnessTest, AfterAKillAStartWithTheModeOnKeepsTheUsersValues) {
    KillLocked();
    Start(true);
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{kPanel, 45}, {kFirst, 30}, {kSecond, 60}}));
    EXPECT_EQ(RecordedNames().size(), 3U);
    VerifyPwmLock();
    EXPECT_TRUE(g_app.pwmLockConfirmed);
    Quit();
    EXPECT_EQ(Display(kFirst).percent, 30U);
    EXPECT_FALSE(HasRecord());
}

TEST_F(SavedBrightnessTest, AnyNumberOfKillsKeepsTheUsersValues) {
    KillLocked();
    for (int i = 0; i < 5; ++i)
        Start(true);
    Start(false);
    EXPECT_EQ(Display(kPanel).percent, 45U);
    EXPECT_EQ(Display(kFirst).percent, 30U);
    EXPECT_EQ(Display(kSecond).percent, 60U);
}

TEST_F(SavedBrightnessTest, ADisplayThatReads99IsStillLocked) {
    LeaveOnly(kFirst);
    KillLocked();
    Display(kFirst).percent = 99;
    Start(false);
    EXPECT_EQ(Display(kFirst).percent, 30U);
}

TEST_F(SavedBrightnessTest, AValueThatTheUserHasChosenSinceIsNotOverwritten) {
    for (const bool mode : {false, true}) {
        SetUp();
        LeaveOnly(kFirst);
        KillLocked();
        Display(kFirst).percent = 98;
        Start(mode);
        Quit();
        EXPECT_EQ(Display(kFirst).percent, 98U) << mode;
        EXPECT_FALSE(HasRecord()) << mode;
    }
}

TEST_F(SavedBrightnessTest, AnotherMonitorInTheSameSlotKeepsItsValue) {
    for (const bool mode : {false, true}) {
        SetUp();
        LeaveOnly(kFirst);
        KillLocked();
        g_monitorDevices[L"\\\\.\\DISPLAY1"] = {{.path = L"another monitor"}};
        Start(mode);
        EXPECT_TRUE(mode || g_sets.empty());
        Quit();
        EXPECT_EQ(Display(kFirst).percent, 100U) << mode;
        EXPECT_FALSE(HasRecord()) << mode;
    }
}

TEST_F(SavedBrightnessTest, AMonitorInAnotherSlotIsNotSet) {
    LeaveOnly(kFirst);
    KillLocked();
    Display(kFirst).name = kSecond;
    g_monitorDevices[L"\\\\.\\DISPLAY2"] = {{.path = L"path-1"}};
    Start(false);
    EXPECT_TRUE(g_sets.empty());
}

TEST_F(SavedBrightnessTest, AMonitorWithoutAPathIsNotRecorded) {
    LeaveOnly(kFirst);
    g_monitorDevices.clear();
    TogglePwmSafeByUser();
    EXPECT_EQ(Display(kFirst).percent, 100U);
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{kFirst, 30}}));
    EXPECT_FALSE(HasRecord());
}

TEST_F(SavedBrightnessTest, AHandWrittenRowWithoutAPathIsNotUsedForAMonitorWithoutOne) {
    LeaveOnly(kFirst);
    g_monitorDevices.clear();
    Display(kFirst).percent = 100;
    Store(1, {30, 0, kFirst, L""});
    Start(false);
    EXPECT_TRUE(g_sets.empty());
    EXPECT_FALSE(HasRecord());
}

TEST_F(SavedBrightnessTest, TheFirstOfTwoRowsForOneDisplayIsUsed) {
    LeaveOnly(kFirst);
    Display(kFirst).percent = 100;
    Store(1, {30, 0, kFirst, L"path-1"});
    Store(2, {70, 0, kFirst, L"path-1"});
    Start(false);
    EXPECT_EQ(Display(kFirst).percent, 30U);
    EXPECT_FALSE(HasRecord());
}

TEST_F(SavedBrightnessTest, DamagedRowsSetNothingAndDisappear) {
    Display(kFirst).percent = 100;
    WriteBytes(path,
               "[Settings]\r\nPWMSafeMode=0\r\n[Restore]\r\n1=900 0 DXVA2:\\\\.\\DISPLAY1#0 path-1\r\n2=30 0 "
               "DXVA2:\\\\.\\DIS");
    Start(false);
    EXPECT_TRUE(g_sets.empty());
    EXPECT_FALSE(HasRecord());
}

// Displays that are away.

TEST_F(SavedBrightnessTest, TheRowOfADisplayThatIsAwayIsKeptAndDatedByTheFirstStartThatMissesIt) {
    LeaveOnly(kFirst);
    KillLocked();
    Display(kFirst).present = false;
    const std::uint64_t before = Now();
    Start(false);
    ASSERT_EQ(ReadRestoreRows().size(), 1U);
    const std::uint64_t since = ReadRestoreRows().at(1).awaySince;
    EXPECT_GE(since, before);
    EXPECT_LE(since, Now());
    EXPECT_TRUE(RecordCalls(During([this] { Start(false); })).empty()) << "it is dated once";
    EXPECT_EQ(ReadRestoreRows().at(1).awaySince, since);
}

TEST_F(SavedBrightnessTest, ADisplayThatReconnectsWithin30DaysIsRestored) {
    for (const bool mode : {false, true}) {
        SetUp();
        LeaveOnly(kFirst);
        Display(kFirst).percent = 100;
        Store(1, {30, Now() - 29 * kDay, kFirst, L"path-1"});
        Display(kFirst).present = false;
        Start(mode);
        EXPECT_TRUE(HasRecord()) << mode;
        Display(kFirst).present = true;
        Start(mode);
        Quit();
        EXPECT_EQ(Display(kFirst).percent, 30U) << mode;
        EXPECT_FALSE(HasRecord()) << mode;
    }
}

TEST_F(SavedBrightnessTest, TheRowOfAMonitorThatWindowsDoesNotIdentifyIsKeptAsIfItWereAway) {
    LeaveOnly(kFirst);
    KillLocked();
    const auto devices = std::exchange(g_monitorDevices, {});
    Start(false);
    EXPECT_TRUE(g_sets.empty());
    ASSERT_EQ(ReadRestoreRows().size(), 1U);
    EXPECT_NE(ReadRestoreRows().at(1).awaySince, 0U);
    g_monitorDevices = devices;
    Start(false);
    EXPECT_EQ(Display(kFirst).percent, 30U);
    EXPECT_FALSE(HasRecord());
}

TEST_F(SavedBrightnessTest, TheRowOfAMonitorThatIsNotIdentifiedAndReadsLessIsDeleted) {
    LeaveOnly(kFirst);
    KillLocked();
    const auto devices = std::exchange(g_monitorDevices, {});
    Display(kFirst).percent = 60;  // by the user
    Start(false);
    EXPECT_FALSE(HasRecord());
    g_monitorDevices = devices;
    Display(kFirst).percent = 100;
    Start(false);
    EXPECT_TRUE(g_sets.empty());
    EXPECT_EQ(Display(kFirst).percent, 100U);
}

TEST_F(SavedBrightnessTest, ARunThatCouldNotIdentifyTheMonitorDoesNotDeleteItsRow) {
    LeaveOnly(kFirst);
    KillLocked();
    const auto devices = std::exchange(g_monitorDevices, {});
    Start(true);
    g_monitorDevices = devices;
    Quit();
    EXPECT_EQ(Display(kFirst).percent, 100U) << "this run knows no other value";
    Start(false);
    EXPECT_EQ(Display(kFirst).percent, 30U);
    EXPECT_FALSE(HasRecord());
}

TEST_F(SavedBrightnessTest, AMonitorThatIsIdentifiedAfterTheStartIsLockedWithTheUsersValue) {
    LeaveOnly(kFirst);
    KillLocked();
    const auto devices = g_monitorDevices;
    g_monitorDevices.clear();
    g_onWrite = [&] { g_monitorDevices = devices; };  // when the row is marked as away
    Start(true);
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{kFirst, 30}}));
    EXPECT_EQ(ReadRestoreRows().at(1).awaySince, 0U);
    Quit();
    EXPECT_EQ(Display(kFirst).percent, 30U);
    EXPECT_FALSE(HasRecord());
}

TEST_F(SavedBrightnessTest, ADisplayThatReconnectsIsNoLongerAway) {
    LeaveOnly(kFirst);
    Display(kFirst).percent = 100;
    Store(1, {30, Now() - 29 * kDay, kFirst, L"path-1"});
    Start(true);
    EXPECT_EQ(ReadRestoreRows().at(1).awaySince, 0U);
}

TEST_F(SavedBrightnessTest, After30DaysTheRowExpires) {
    g_displays.clear();
    Store(1, {30, Now() - 31 * kDay, kFirst, L"path-1"});
    Start(false);
    EXPECT_FALSE(HasRecord());
}

TEST_F(SavedBrightnessTest, ADateInTheFutureIsReplaced) {
    g_displays.clear();
    Store(1, {30, Now() + 31 * kDay, kFirst, L"path-1"});
    Start(false);
    EXPECT_LE(ReadRestoreRows().at(1).awaySince, Now());
}

TEST_F(SavedBrightnessTest, ADisplayThatAppearsAfterTheStartIsLockedWithTheUsersValue) {
    LeaveOnly(kFirst);
    KillLocked();
    Display(kFirst).present = false;
    Start(true);
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty());
    Display(kFirst).present = true;
    RefreshPwmSafeTargets(true);
    AssertPwmSafeLock(false);
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{kFirst, 30}}));
    EXPECT_EQ(ReadRestoreRows().at(1).awaySince, 0U);
    Quit();
    EXPECT_EQ(Display(kFirst).percent, 30U);
    EXPECT_FALSE(HasRecord());
}

TEST_F(SavedBrightnessTest, ADisplayThatRefusedItsValueIsLockedAgainWithIt) {
    LeaveOnly(kFirst);
    TogglePwmSafeByUser();
    Display(kFirst).refuses = true;
    TogglePwmSafeByUser();
    Display(kFirst).refuses = false;
    EXPECT_EQ(Display(kFirst).percent, 100U);
    TogglePwmSafeByUser();
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{kFirst, 30}}));
}

TEST_F(SavedBrightnessTest, AValueChosenInTheMeantimeReplacesTheRow) {
    LeaveOnly(kFirst);
    TogglePwmSafeByUser();
    Display(kFirst).refuses = true;
    TogglePwmSafeByUser();
    Display(kFirst).refuses = false;
    Display(kFirst).percent = 70;
    EXPECT_EQ(RecordCalls(During([] { TogglePwmSafeByUser(); })),
              (CallRecord{"write 1", "flush", Narrow(kFirst) + " := 100"}));
    EXPECT_EQ(ReadRestoreRows().at(1).percent, 70U);
}

// Several monitors behind one display.

TEST_F(SavedBrightnessTest, EachMonitorBehindADisplayHasItsPath) {
    const std::wstring next = L"DXVA2:\\\\.\\DISPLAY1#1";
    g_displays = {{.name = kFirst, .percent = 30}, {.name = next, .percent = 50}};
    g_monitorDevices[L"\\\\.\\DISPLAY1"] = {{.path = L"off", .state = 0}, {.path = L"a"}, {.path = L"b"}};
    TogglePwmSafeByUser();
    EXPECT_EQ(ReadRestoreRows().at(1).path, L"a");
    EXPECT_EQ(ReadRestoreRows().at(2).path, L"b");
}

TEST_F(SavedBrightnessTest, AMonitorThatIsNotListedHasThePathOfTheLastOne) {
    const std::wstring third = L"DXVA2:\\\\.\\DISPLAY1#2";
    g_displays = {{.name = third, .percent = 30}};
    g_monitorDevices[L"\\\\.\\DISPLAY1"] = {{.path = L"a"}, {.path = L"b"}};
    TogglePwmSafeByUser();
    EXPECT_EQ(ReadRestoreRows().at(1).path, L"b");
}

// The end of the session.

TEST_F(SavedBrightnessTest, TheWindowThreadDeletesTheRowsThatTheReleaseThreadHasRestored) {
    TogglePwmSafeByUser();
    Display(kSecond).refuses = true;
    g_app.ending = true;
    ASSERT_TRUE(StartPwmSafeRelease());
    WaitForPwmSafeRelease(20000);
    EXPECT_EQ(Display(kFirst).percent, 30U);
    EXPECT_EQ(RecordedNames(), std::vector<std::wstring>{kSecond});
    EXPECT_TRUE(FinishPwmSafeRelease());
}

TEST_F(SavedBrightnessTest, ARunningReleaseKeepsEveryRow) {
    TogglePwmSafeByUser();
    HANDLE proceed = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    g_whileWaiting = [&](Moment moment) {
        if (moment == Moment::BeforeListing) WaitForSingleObject(proceed, 20000);
    };
    g_app.ending = true;
    StartPwmSafeRelease();
    WaitForPwmSafeRelease(20);
    EXPECT_EQ(RecordedNames().size(), 3U);
    SetEvent(proceed);
    WaitForPwmSafeRelease(20000);
    EXPECT_FALSE(HasRecord());
    EXPECT_TRUE(FinishPwmSafeRelease());
    CloseHandle(proceed);
}

TEST_F(SavedBrightnessTest, ASessionThatContinuesRecordsTheNextLockAgain) {
    TogglePwmSafeByUser();
    g_app.ending = true;
    StartPwmSafeRelease();
    WaitForPwmSafeRelease(20000);
    g_app.ending = false;
    ReassertPwmSafeAfterChange();
    EXPECT_EQ(Display(kFirst).percent, 100U);
    EXPECT_EQ(RecordedNames().size(), 3U);
    Quit();
    EXPECT_FALSE(HasRecord());
}

TEST_F(SavedBrightnessTest, AnEndWhileADisplayIsBeingLockedLeavesNoRecord) {
    g_whileWaiting = [](Moment moment) {
        if (moment != Moment::BeforeSet || g_app.ending || g_sets.back().name != kFirst) return;
        g_app.ending = true;
        StartPwmSafeRelease();
        g_whileWaiting = nullptr;
        WaitForPwmSafeRelease(20000);
        EXPECT_EQ(RecordedNames().size(), 2U) << "the display may still accept the lock's value";
    };
    TogglePwmSafeByUser();
    EXPECT_EQ(Display(kPanel).percent, 45U);
    EXPECT_EQ(Display(kFirst).percent, 30U);
    EXPECT_FALSE(HasRecord());
    EXPECT_TRUE(FinishPwmSafeRelease());
}

// Kills: at every write of the record and at every moment of every command, the state of file and displays is
// what a kill leaves. The next start must restore each display from it.
TEST_F(SavedBrightnessTest, AKillAtAnyMomentOfARunIsFollowedByARestoringStart) {
    struct Remains {
        std::string file;
        std::vector<FakeDisplay> displays;
    };
    std::map<std::string, Remains> kills;  // by all that differs
    const auto kill = [&] {
        const std::string file = ReadBytes(path);
        std::string state = file;
        for (const FakeDisplay& display : g_displays)
            state += " " + std::to_string(display.percent);
        kills[state] = {file, g_displays};
    };
    g_onWrite = kill;
    g_whileWaiting = [&](Moment) { kill(); };
    TogglePwmSafeByUser();
    VerifyPwmLock();
    RefreshPwmSafeTargets(true);
    TogglePwmSafeByUser();
    TogglePwmSafeByUser();
    Quit();
    kill();
    EXPECT_GE(kills.size(), 12U);
    g_onWrite = nullptr;
    g_whileWaiting = nullptr;

    for (const auto& [state, remains] : kills) {
        for (const bool mode : {false, true}) {
            WriteBytes(path, remains.file);
            g_displays = remains.displays;
            Start(mode);
            Quit();
            const testing::ScopedTrace trace(__FILE__, __LINE__, state + (mode ? ", on" : ", off"));
            EXPECT_EQ(Display(kPanel).percent, 45U);
            EXPECT_EQ(Display(kFirst).percent, 30U);
            EXPECT_EQ(Display(kSecond).percent, 60U);
            EXPECT_FALSE(HasRecord());
            ASSERT_FALSE(HasFailure());
        }
    }
}
