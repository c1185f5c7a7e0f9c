// No failure of the file is reported, loses a line from the ring or stops the lines after it.
#include <functional>

#include "store/log_fixture.h"

namespace {

using log_fixture::FillerBytes;
using log_fixture::kMarker;

// A full disk: only this many more bytes can be written.
constexpr std::size_t kEndless = static_cast<std::size_t>(-1);
std::size_t g_diskSpace = kEndless;
std::function<void()> g_beforeEachWrite;
bool g_replaceSucceeds = true;
bool g_crashDuringTrim = false;

class EventLogFailures : public log_fixture::EventLogTest {
protected:
    void TearDown() override {
        g_diskSpace = kEndless;
        g_beforeEachWrite = nullptr;
        g_replaceSucceeds = true;
        EventLogTest::TearDown();
    }
};

const std::string kOld = "---------- session start ----------\r\n[01:02:03.004] yesterday\r\n";

std::size_t FakeWrite(const void* data, std::size_t size, std::size_t count, std::FILE* file) {
    const auto real = Real(&fwrite);
    if (g_beforeEachWrite) g_beforeEachWrite();
    if (g_diskSpace == kEndless) return real(data, size, count, file);
    const std::size_t fits = size * count < g_diskSpace ? size * count : g_diskSpace;
    g_diskSpace -= fits;
    return real(data, 1, fits, file) / size;
}

BOOL WINAPI FakeMoveFileEx(const wchar_t* from, const wchar_t* to, DWORD flags) {
    EXPECT_EQ(flags, DWORD{MOVEFILE_REPLACE_EXISTING});
    if (g_crashDuringTrim) LogInCrash(L"Crashed");
    return g_replaceSucceeds ? Real(&MoveFileExW)(from, to, flags) : FALSE;
}

}  // namespace

AMBREL_SEAM(fwrite, FakeWrite);
AMBREL_SEAM(MoveFileExW, FakeMoveFileEx);

TEST_F(EventLogFailures, AFolderOfThatNameKeepsTheLinesInTheRing) {
    ASSERT_TRUE(CreateDirectoryW(path.c_str(), nullptr));
    OpenEventLogFile(path);
    LogEvent("only in memory");
    EXPECT_EQ(LastLine(), L"[21:04:07.031] only in memory");
    EXPECT_EQ(GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_DIRECTORY,
              static_cast<DWORD>(FILE_ATTRIBUTE_DIRECTORY));

    ASSERT_TRUE(RemoveDirectoryW(path.c_str()));
    LogEvent("written again");
    EXPECT_EQ(ReadBytes(path), "[21:04:07.031] written again\r\n");
}

TEST_F(EventLogFailures, AMissingFolderIsNotCreated) {
    const std::wstring missing = folder.Child(L"gone");
    OpenEventLogFile(missing + L"\\events.log");
    LogEvent("only in memory");
    EXPECT_EQ(LastLine(), L"[21:04:07.031] only in memory");
    EXPECT_FALSE(FileExists(missing));
}

TEST_F(EventLogFailures, AnInvalidPathKeepsTheLinesInTheRing) {
    for (const std::wstring& bad :
         {std::wstring(L"?:\\<>|\\events.log"), std::wstring(40000, L'x'), std::wstring(L"\\\\.\\")}) {
        OpenEventLogFile(bad);
        LogEvent("still here");
        EXPECT_EQ(LastLine(), L"[21:04:07.031] still here");
    }
}

TEST_F(EventLogFailures, AnEmptyPathLogsInMemoryOnly) {
    OpenEventLogFile(L"");
    LogEvent("only in memory");
    EXPECT_EQ(LastLine(), L"[21:04:07.031] only in memory");
}

TEST_F(EventLogFailures, ALineLoggedWhileTheFileIsLockedIsMissingFromTheFileOnly) {
    OpenEventLogFile(path);
    LogEvent("before");
    {
        const LockedFile lock(path);
        LogEvent("meanwhile");
        EXPECT_EQ(LastLine(), L"[21:04:07.031] meanwhile");
    }
    LogEvent("after");
    EXPECT_EQ(ReadBytes(path), kMarker + FillerBytes() + "[21:04:07.031] before\r\n[21:04:07.031] after\r\n");
}

TEST_F(EventLogFailures, AFileLockedAtStartIsNeitherTrimmedNorMarked) {
    const std::string old(262145, 'o');
    WriteBytes(path, old);
    {
        const LockedFile lock(path);
        OpenEventLogFile(path);
        LogEvent("meanwhile");
    }
    LogEvent("after");
    EXPECT_EQ(ReadBytes(path), old + "[21:04:07.031] after\r\n");
}

TEST_F(EventLogFailures, AFileThatCannotBeReadIsNotTrimmed) {
    const std::string old(262145, 'o');
    WriteBytes(path, old);
    log_fixture::g_refusedMode = "rb";
    OpenEventLogFile(path);
    EXPECT_EQ(ReadBytes(path), old + kMarker + FillerBytes());
}

TEST_F(EventLogFailures, ATrimThatCannotWriteLeavesTheFileAndAppendsTheSession) {
    const std::string old(262145, 'o');
    WriteBytes(path, old);
    log_fixture::g_refusedMode = "wb";
    OpenEventLogFile(path);
    EXPECT_EQ(ReadBytes(path), old + kMarker + FillerBytes());
}

TEST_F(EventLogFailures, AReadOnlyFileIsNotChanged) {
    const std::string old(262145, 'o');
    WriteBytes(path, old);
    {
        const LockedFile lock(path, FILE_SHARE_READ);
        OpenEventLogFile(path);
        LogEvent("only in memory");
        EXPECT_EQ(LastLine(), L"[21:04:07.031] only in memory");
    }
    EXPECT_EQ(ReadBytes(path), old);
}

// Whether the write is refused depends on the user: under Wine, root may write.
TEST_F(EventLogFailures, AFileMarkedReadOnlyKeepsItsContentAndTheRingItsLines) {
    WriteBytes(path, kOld);
    ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
    OpenEventLogFile(path);
    LogEvent("in memory");
    EXPECT_TRUE(ReadBytes(path).starts_with(kOld));
    EXPECT_EQ(LastLine(), L"[21:04:07.031] in memory");
}

TEST_F(EventLogFailures, OnAFullDiskTheLinesStayInTheRing) {
    OpenEventLogFile(path);
    const std::string before = ReadBytes(path);
    g_diskSpace = 0;
    LogEvent("no room");
    LogEvent("still no room");
    EXPECT_EQ(LastLine(), L"[21:04:07.031] still no room");
    EXPECT_EQ(ReadBytes(path), before);

    g_diskSpace = kEndless;
    LogEvent("room again");
    EXPECT_EQ(ReadBytes(path), before + "[21:04:07.031] room again\r\n");
}

TEST_F(EventLogFailures, ADiskThatFillsWithinALineDoesNotStopTheNext) {
    OpenEventLogFile(path);
    const std::string before = ReadBytes(path);
    g_diskSpace = 17;
    LogEvent("cut off");
    g_diskSpace = kEndless;
    LogEvent("whole");
    EXPECT_EQ(ReadBytes(path), before + "[21:04:07.031] cu[21:04:07.031] whole\r\n");
}

TEST_F(EventLogFailures, ADiskThatIsFullDuringTheTrimKeepsTheOldFile) {
    const std::string old(300000, 'o');
    WriteBytes(path, old);
    g_diskSpace = 1000;
    OpenEventLogFile(path);
    g_diskSpace = kEndless;
    LogEvent("whole");
    EXPECT_EQ(ReadBytes(path), old + "[21:04:07.031] whole\r\n");
    EXPECT_FALSE(FileExists(path + L".new"));
}

// Killed at any of these moments, the process leaves the old file or the new one.
TEST_F(EventLogFailures, WhileTheTrimWritesTheOldFileIsComplete) {
    const std::string old = std::string(234464, 'a') + std::string(65536, 'b');
    WriteBytes(path, old);
    std::string seen;
    g_beforeEachWrite = [&] {
        seen = ReadBytes(path);
        g_beforeEachWrite = nullptr;
    };
    OpenEventLogFile(path);
    EXPECT_EQ(seen, old);
    EXPECT_TRUE(ReadBytes(path).starts_with(std::string(65536, 'b') + kMarker));
}

TEST_F(EventLogFailures, AReplacementThatWindowsRefusesKeepsTheOldFile) {
    const std::string old(262145, 'o');
    WriteBytes(path, old);
    g_replaceSucceeds = false;
    OpenEventLogFile(path);
    EXPECT_EQ(ReadBytes(path), old + kMarker + FillerBytes());
    EXPECT_FALSE(FileExists(path + L".new"));
}

TEST_F(EventLogFailures, AFileThatCannotBeTrimmedStopsGrowingAndTheRingKeepsItsLines) {
    OpenEventLogFile(path);
    const std::string large(4194305, 'o');
    WriteBytes(path, large);
    g_replaceSucceeds = false;
    LogEvent("not in the file");
    EXPECT_EQ(ReadBytes(path), large);
    EXPECT_EQ(LastLine(), L"[21:04:07.031] not in the file");
    g_replaceSucceeds = true;
    LogEvent("in the file");
    EXPECT_EQ(ReadBytes(path), std::string(65536, 'o') + "[21:04:07.031] in the file\r\n");
}

// In the middle of a trim this thread holds the log's lock.
TEST_F(EventLogFailures, ACrashInTheLogItselfIsLoggedWithoutWaiting) {
    const std::string old(262145, 'o');
    WriteBytes(path, old);
    g_replaceSucceeds = false;
    g_crashDuringTrim = true;
    OpenEventLogFile(path);
    g_crashDuringTrim = false;
    EXPECT_EQ(ReadBytes(path), old + "[21:04:07.031] Crashed\r\n" + kMarker + FillerBytes());
}
