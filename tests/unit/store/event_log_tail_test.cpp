// The end of events.log as the support report shows it.
#include <algorithm>

#include "store/log_fixture.h"

namespace {

using Lines = std::vector<std::wstring>;

constexpr std::size_t kTail = 16384;  // bytes that are read

constexpr std::size_t kEndless = ~std::size_t{0};
std::size_t g_readable = kEndless;  // bytes that can be read from now on
int g_lockDepth = 0;
int g_readsOutsideTheLock = 0;
bool g_watching = false;

class EventLogTail : public log_fixture::EventLogTest {
protected:
    void SetUp() override {
        g_readable = kEndless;
        g_watching = false;
        EventLogTest::SetUp();
    }

    void TearDown() override {
        g_readable = kEndless;
        g_watching = false;
        EventLogTest::TearDown();
    }

    // The log's file is open and contains exactly these bytes.
    void Hold(const std::string& bytes) const {
        OpenEventLogFile(path);
        WriteBytes(path, bytes);
        log_fixture::g_opened.clear();
    }

    Lines TailOf(const std::string& bytes) const {
        Hold(bytes);
        return ReadLogTail();
    }

    // "line 1", "line 2" and so on.
    static std::string Numbered(int count, const std::string& end) {
        std::string bytes;
        for (int i = 1; i <= count; ++i)
            bytes += "line " + std::to_string(i) + end;
        return bytes;
    }

    static Lines NumberedLines(int first, int last) {
        Lines lines;
        for (int i = first; i <= last; ++i)
            lines.push_back(L"line " + std::to_wstring(i));
        return lines;
    }
};

void WINAPI CountingAcquire(SRWLOCK* lock) {
    Real (&AcquireSRWLockExclusive)(lock);
    ++g_lockDepth;
}

void WINAPI CountingRelease(SRWLOCK* lock) {
    --g_lockDepth;
    Real (&ReleaseSRWLockExclusive)(lock);
}

std::size_t FakeRead(void* data, std::size_t size, std::size_t count, std::FILE* file) {
    const auto real = Real(&fread);
    if (g_watching && g_lockDepth != 1) ++g_readsOutsideTheLock;
    if (g_readable == kEndless) return real(data, size, count, file);
    const std::size_t fits = std::min(size * count, g_readable);
    return real(data, 1, fits, file) / size;
}

}  // namespace

AMBREL_SEAM(AcquireSRWLockExclusive, CountingAcquire);
AMBREL_SEAM(ReleaseSRWLockExclusive, CountingRelease);
AMBREL_SEAM(fread, FakeRead);

TEST_F(EventLogTail, WithoutAKnownFileThereAreNoLines) {
    EXPECT_EQ(ReadLogTail(), Lines{});
    EXPECT_TRUE(log_fixture::g_opened.empty());
}

TEST_F(EventLogTail, AMissingFileHasNoLinesAndIsNotCreated) {
    Hold("");
    ASSERT_TRUE(DeleteFileW(path.c_str()));
    EXPECT_EQ(ReadLogTail(), Lines{});
    EXPECT_FALSE(FileExists(path));
}

TEST_F(EventLogTail, AnEmptyFileHasNoLines) {
    EXPECT_EQ(TailOf(""), Lines{});
}

TEST_F(EventLogTail, AFileThatCannotBeOpenedHasNoLines) {
    Hold("one\r\n");
    log_fixture::g_refusedMode = "rb";
    EXPECT_EQ(ReadLogTail(), Lines{});
}

TEST_F(EventLogTail, ALockedFileHasNoLinesUntilItIsUnlocked) {
    Hold("one\r\n");
    {
        const LockedFile lock(path);
        EXPECT_EQ(ReadLogTail(), Lines{});
    }
    EXPECT_EQ(ReadLogTail(), Lines{L"one"});
}

TEST_F(EventLogTail, AFolderOfThatNameHasNoLines) {
    ASSERT_TRUE(CreateDirectoryW(path.c_str(), nullptr));
    OpenEventLogFile(path);
    EXPECT_EQ(ReadLogTail(), Lines{});
}

TEST_F(EventLogTail, TheFileIsReadOnceInBinaryAndNotChanged) {
    const std::string bytes = "one\r\n\x1atwo\r\n";
    Hold(bytes);
    EXPECT_EQ(ReadLogTail(), (Lines{L"one",
                                    L"\xFFFD"
                                    L"two"}));
    EXPECT_EQ(log_fixture::g_opened, std::vector<std::string>{"rb"});
    EXPECT_EQ(ReadBytes(path), bytes);
}

TEST_F(EventLogTail, IsReadUnderTheLogsLock) {
    Hold("one\r\n");
    g_watching = true;
    g_readsOutsideTheLock = 0;
    EXPECT_EQ(ReadLogTail(), Lines{L"one"});
    EXPECT_EQ(g_readsOutsideTheLock, 0);
    EXPECT_EQ(g_lockDepth, 0);
}

TEST_F(EventLogTail, ShowsTheLinesOfThisRunAfterTheMarker) {
    OpenEventLogFile(path);
    LogEvent("last");
    const Lines lines = ReadLogTail();
    ASSERT_EQ(lines.size(), 40u);
    EXPECT_EQ(lines[38], L"[21:04:07.031] filler");
    EXPECT_EQ(lines[39], L"[21:04:07.031] last");
}

TEST_F(EventLogTail, ThirtyNineAndFortyLinesAreShownCompletely) {
    EXPECT_EQ(TailOf(Numbered(39, "\r\n")), NumberedLines(1, 39));
    EXPECT_EQ(TailOf(Numbered(40, "\r\n")), NumberedLines(1, 40));
}

TEST_F(EventLogTail, TheFirstOfFortyOneLinesIsOmitted) {
    EXPECT_EQ(TailOf(Numbered(41, "\r\n")), NumberedLines(2, 41));
}

TEST_F(EventLogTail, TheLastFortyOfAThousandLinesAreShownInTheFilesOrder) {
    EXPECT_EQ(TailOf(Numbered(1000, "\r\n")), NumberedLines(961, 1000));
}

TEST_F(EventLogTail, LinesMayEndWithLfAlone) {
    EXPECT_EQ(TailOf("one\ntwo\r\nthree\n"), (Lines{L"one", L"two", L"three"}));
    EXPECT_EQ(TailOf(Numbered(41, "\n")), NumberedLines(2, 41));
}

TEST_F(EventLogTail, TheLastLineMayLackItsEnd) {
    EXPECT_EQ(TailOf("one\r\ntwo"), (Lines{L"one", L"two"}));
    EXPECT_EQ(TailOf("one"), Lines{L"one"});
    EXPECT_EQ(TailOf(Numbered(40, "\r\n") + "line 41"), NumberedLines(2, 41));
}

TEST_F(EventLogTail, EmptyLinesAreLines) {
    EXPECT_EQ(TailOf("\r\n"), Lines{L""});
    EXPECT_EQ(TailOf("one\r\n\r\n\ntwo\r\n"), (Lines{L"one", L"", L"", L"two"}));
}

TEST_F(EventLogTail, LettersOutsideAsciiAreRead) {
    EXPECT_EQ(TailOf("C:\\Jos\xC3\xA9\\\xE6\x97\xA5\\\xF0\x9F\x8C\x99\r\n"),
              Lines{L"C:\\Jos\u00e9\\\u65e5\\\U0001F319"});
}

TEST_F(EventLogTail, ZerosInTheFileBecomeReplacementCharacters) {
    EXPECT_EQ(TailOf(std::string("a\0b\r\n\0\0\0", 8)), (Lines{L"a\uFFFDb", L"\uFFFD\uFFFD\uFFFD"}));
}

TEST_F(EventLogTail, BytesThatAreNotUtf8BecomeReplacementCharacters) {
    EXPECT_EQ(TailOf("a\xFFz\r\n"), Lines{L"a\uFFFDz"});
    EXPECT_EQ(TailOf("one\r\n\x80\r\ntwo\r\n"), (Lines{L"one", L"\uFFFD", L"two"}));
}

TEST_F(EventLogTail, ATruncatedCharacterAtTheEndDoesNotHideTheLinesBeforeIt) {
    const Lines lines = TailOf("one\r\ntwo \xE6\x97");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], L"one");
    EXPECT_TRUE(lines[1].starts_with(L"two \uFFFD"));
}

TEST_F(EventLogTail, AFileOfJust16384BytesIsReadFromItsFirstLine) {
    const std::string first = std::string(kTail - 12, 'f') + "\r\n";
    const std::string bytes = first + "one\r\ntwo\r\n";
    ASSERT_EQ(bytes.size(), kTail);
    EXPECT_EQ(TailOf(bytes), (Lines{std::wstring(kTail - 12, L'f'), L"one", L"two"}));
}

TEST_F(EventLogTail, AFileOneByteLargerLosesItsTruncatedFirstLine) {
    const std::string bytes = std::string(kTail - 11, 'f') + "\r\none\r\ntwo\r\n";
    ASSERT_EQ(bytes.size(), kTail + 1);
    EXPECT_EQ(TailOf(bytes), (Lines{L"one", L"two"}));
}

TEST_F(EventLogTail, ALineTruncatedByTheStartOfTheTailIsDropped) {
    const std::string tail = "rest of a line\r\n" + std::string(kTail - 23, 'x') + "\r\none\r\n";
    ASSERT_EQ(tail.size(), kTail);
    EXPECT_EQ(TailOf("old\r\nthe " + tail), (Lines{std::wstring(kTail - 23, L'x'), L"one"}));
}

TEST_F(EventLogTail, ATruncationWithinACharacterLeavesNoTraceOfIt) {
    // The tail starts with the last two bytes of a three-byte character.
    const std::string tail = "\x97\xA5 rest\r\n" + std::string(kTail - 16, 'x') + "\r\none\r\n";
    ASSERT_EQ(tail.size(), kTail);
    EXPECT_EQ(TailOf("old\r\n\xE6" + tail), (Lines{std::wstring(kTail - 16, L'x'), L"one"}));
}

TEST_F(EventLogTail, ATruncationBetweenCrAndLfLosesNoLine) {
    const std::string tail = "\n" + std::string(kTail - 8, 'x') + "\r\none\r\n";
    ASSERT_EQ(tail.size(), kTail);
    EXPECT_EQ(TailOf("old\r" + tail), (Lines{std::wstring(kTail - 8, L'x'), L"one"}));
}

TEST_F(EventLogTail, ATruncationBetweenTwoLinesLosesNoLine) {
    const std::string tail = "whole\r\n" + std::string(kTail - 14, 'x') + "\r\none\r\n";
    ASSERT_EQ(tail.size(), kTail);
    EXPECT_EQ(TailOf("old\r\n" + tail), (Lines{L"whole", std::wstring(kTail - 14, L'x'), L"one"}));
}

TEST_F(EventLogTail, OnlyLongLinesInTheLast16384BytesAreShown) {
    // Lines of 1000 bytes each: 16 complete ones fit.
    std::string bytes;
    Lines expected;
    for (int i = 10; i < 60; ++i) {
        const std::string line = std::to_string(i) + std::string(996, '.');
        bytes += line + "\r\n";
        if (i >= 44) expected.emplace_back(line.begin(), line.end());
    }
    EXPECT_EQ(TailOf(bytes), expected);
}

TEST_F(EventLogTail, ALineLongerThanTheTailIsDropped) {
    EXPECT_EQ(TailOf(std::string(20000, 'x')), Lines{});
    EXPECT_EQ(TailOf(std::string(20000, 'x') + "\r\n"), Lines{});
    EXPECT_EQ(TailOf(std::string(20000, 'x') + "\r\none\r\n"), Lines{L"one"});
}

TEST_F(EventLogTail, APartiallyReadableFileReturnsThatPart) {
    Hold("one\r\ntwo\r\nthree\r\n");
    g_readable = 7;
    EXPECT_EQ(ReadLogTail(), (Lines{L"one", L"tw"}));
    g_readable = 0;
    EXPECT_EQ(ReadLogTail(), Lines{});
}

TEST_F(EventLogTail, TheLastLinesOfAFileOf256KilobytesAreShown) {
    EXPECT_EQ(TailOf(log_fixture::Repeated("[21:04:07.031] old\r\n", 13000) + Numbered(40, "\r\n")),
              NumberedLines(1, 40));
}
