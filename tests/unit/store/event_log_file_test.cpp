#include "store/log_fixture.h"

namespace {

using log_fixture::FillerBytes;
using log_fixture::g_opened;
using log_fixture::kMarker;
using log_fixture::Repeated;

class EventLogFile : public log_fixture::EventLogTest {
protected:
    // The content of the file after the part that opening it over `before` writes.
    std::string AfterOpening(const std::string& before = {}) const {
        const std::string opened = before + kMarker + FillerBytes();
        const std::string bytes = ReadBytes(path);
        EXPECT_EQ(bytes.substr(0, opened.size()), opened);
        return bytes.size() > opened.size() ? bytes.substr(opened.size()) : std::string();
    }
};

// Bytes without repetition.
std::string Numbered(std::size_t size) {
    std::string bytes;
    for (int line = 0; bytes.size() < size; ++line)
        bytes += "[00:00:00.000] old line " + std::to_string(line) + "\r\n";
    bytes.resize(size);
    return bytes;
}

}  // namespace

TEST_F(EventLogFile, OpeningCreatesItWithTheMarkerAndThenTheHeldLines) {
    LogEvent("Ambrel started");
    LogEvent("second line");
    OpenEventLogFile(path);
    EXPECT_EQ(ReadBytes(path), kMarker + Repeated("[21:04:07.031] filler\r\n", 498) +
                                   "[21:04:07.031] Ambrel started\r\n[21:04:07.031] second line\r\n");
}

TEST_F(EventLogFile, TheHeldLinesKeepTheTimeAtWhichTheyWereLogged) {
    SetTime(8, 0, 0, 1);
    LogEvent("early");
    SetTime(9, 0, 0, 2);
    OpenEventLogFile(path);
    const std::string bytes = ReadBytes(path);
    EXPECT_TRUE(bytes.ends_with("[08:00:00.001] early\r\n"));
    EXPECT_EQ(bytes.find("09:00"), std::string::npos);
}

TEST_F(EventLogFile, TheMarkerIsNotInTheRing) {
    OpenEventLogFile(path);
    const std::vector<std::wstring> ring = ReadLogRing();
    ASSERT_EQ(ring.size(), 500u);
    for (const std::wstring& line : ring)
        EXPECT_EQ(line, L"[21:04:07.031] filler");
}

TEST_F(EventLogFile, ItStartsWithTheMarkerWithoutStampOrByteOrderMark) {
    OpenEventLogFile(path);
    EXPECT_EQ(ReadBytes(path).substr(0, 37), "---------- session start ----------\r\n");
}

TEST_F(EventLogFile, LaterLinesFollowTheHeldOnes) {
    OpenEventLogFile(path);
    LogEvent("one");
    LogEvent("two %d", 2);
    EXPECT_EQ(AfterOpening(), "[21:04:07.031] one\r\n[21:04:07.031] two 2\r\n");
}

TEST_F(EventLogFile, ASecondSessionIsAppendedToTheFirst) {
    WriteBytes(path, "---------- session start ----------\r\n[01:02:03.004] yesterday\r\n");
    OpenEventLogFile(path);
    LogEvent("today");
    EXPECT_EQ(AfterOpening("---------- session start ----------\r\n[01:02:03.004] yesterday\r\n"),
              "[21:04:07.031] today\r\n");
}

TEST_F(EventLogFile, AnEmptyFileJustGetsTheSession) {
    WriteBytes(path, "");
    OpenEventLogFile(path);
    EXPECT_EQ(AfterOpening(), "");
}

TEST_F(EventLogFile, TextIsWrittenAsUtf8) {
    OpenEventLogFile(path);
    LogEvent("%ls", L"C:\\Jos\u00e9\\\u0416\\\u65e5\\\U0001F319");
    EXPECT_EQ(AfterOpening(), "[21:04:07.031] C:\\Jos\xC3\xA9\\\xD0\x96\\\xE6\x97\xA5\\\xF0\x9F\x8C\x99\r\n");
}

TEST_F(EventLogFile, HeldLinesAreWrittenAsUtf8Too) {
    LogEvent("%ls", L"\u00fc");
    OpenEventLogFile(path);
    EXPECT_TRUE(ReadBytes(path).ends_with("[21:04:07.031] \xC3\xBC\r\n"));
}

TEST_F(EventLogFile, TheLongestMessageOfThreeByteCharactersIsComplete) {
    OpenEventLogFile(path);
    const std::wstring message(600, L'\u65e5');
    LogEvent("%ls", message.c_str());
    EXPECT_EQ(AfterOpening(), "[21:04:07.031] " + Repeated("\xE6\x97\xA5", 511) + "\r\n");
}

TEST_F(EventLogFile, ATruncatedSurrogatePairStillWritesALine) {
    OpenEventLogFile(path);
    const std::wstring message = std::wstring(510, L'x') + L"\U0001F319";
    LogEvent("%ls", message.c_str());
    EXPECT_EQ(AfterOpening(), "[21:04:07.031] " + std::string(510, 'x') + "\xEF\xBF\xBD\r\n");
}

TEST_F(EventLogFile, AnEmptyMessageWritesItsStamp) {
    OpenEventLogFile(path);
    LogEvent("%ls", L"");
    EXPECT_EQ(AfterOpening(), "[21:04:07.031] \r\n");
}

TEST_F(EventLogFile, ControlCharactersInAMessageCannotForgeALine) {
    OpenEventLogFile(path);
    LogEvent("Hardware: %ls", L"x\r\n[00:00:00.000] forged\x1A\x85\x2028");
    constexpr char kReplacement[] = "\xEF\xBF\xBD";
    EXPECT_EQ(AfterOpening(), std::string("[21:04:07.031] Hardware: x") + kReplacement + kReplacement +
                                  "[00:00:00.000] forged" + kReplacement + kReplacement + kReplacement +
                                  "\r\n");
}

TEST_F(EventLogFile, AFileOf262144BytesIsNotTrimmed) {
    const std::string old = Numbered(262144);
    WriteBytes(path, old);
    OpenEventLogFile(path);
    EXPECT_EQ(AfterOpening(old), "");
}

TEST_F(EventLogFile, AFileOf262145BytesIsTrimmedToItsLast65536) {
    const std::string old = Numbered(262145);
    WriteBytes(path, old);
    OpenEventLogFile(path);
    EXPECT_EQ(AfterOpening(old.substr(262145 - 65536)), "");
}

TEST_F(EventLogFile, AFileOf3MegabytesIsTrimmedToItsLast65536) {
    const std::string old = Numbered(3 * 1024 * 1024 + 17);
    WriteBytes(path, old);
    OpenEventLogFile(path);
    EXPECT_EQ(AfterOpening(old.substr(old.size() - 65536)), "");
}

TEST_F(EventLogFile, TheTrimIsAtAByteEvenInsideACharacter) {
    // 65536 is not a multiple of three, so the file is truncated in the middle of one of these letters.
    const std::string old = Repeated("\xE6\x97\xA5", 90000);
    WriteBytes(path, old);
    OpenEventLogFile(path);
    const std::string kept = old.substr(old.size() - 65536);
    ASSERT_EQ(kept[0], '\xA5');
    EXPECT_EQ(AfterOpening(kept), "");
}

TEST_F(EventLogFile, TheTrimKeepsBytesOfEveryValue) {
    std::string old;
    for (int i = 0; i < 300000; ++i)
        old += static_cast<char>((i * 7 + i / 256) & 0xFF);
    WriteBytes(path, old);
    OpenEventLogFile(path);
    EXPECT_EQ(AfterOpening(old.substr(old.size() - 65536)), "");
}

TEST_F(EventLogFile, TheFileIsTrimmedOnlyWhenItIsOpened) {
    OpenEventLogFile(path);
    WriteBytes(path, Numbered(300000));
    LogEvent("one more");
    EXPECT_EQ(ReadBytes(path), Numbered(300000) + "[21:04:07.031] one more\r\n");
}

TEST_F(EventLogFile, AFileThatHasPassed4MegabytesIsTrimmedBeforeTheNextLine) {
    OpenEventLogFile(path);
    const std::string large = Numbered(4194305);
    WriteBytes(path, large);
    LogEvent("one more");
    EXPECT_EQ(ReadBytes(path), large.substr(large.size() - 65536) + "[21:04:07.031] one more\r\n");
}

TEST_F(EventLogFile, AFileOf4MegabytesIsNotTrimmed) {
    OpenEventLogFile(path);
    const std::string large = Numbered(4194304);
    WriteBytes(path, large);
    LogEvent("one more");
    EXPECT_EQ(ReadBytes(path), large + "[21:04:07.031] one more\r\n");
}

// The longest line has 15 characters of stamp, 511 of three bytes each, and a line end.
TEST_F(EventLogFile, ItNeverGrowsBeyond4MegabytesAndOneLine) {
    const std::wstring longest(511, L'\u65e5');
    OpenEventLogFile(path);
    WriteBytes(path, Numbered(4194304 - 5 * 1550));
    for (int i = 0; i < 10; ++i) {
        LogEvent("%ls", longest.c_str());
        WIN32_FILE_ATTRIBUTE_DATA file = {};
        ASSERT_TRUE(GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &file));
        ASSERT_LE(file.nFileSizeLow, 4194304U + 15 + 511 * 3 + 2);
    }
}

TEST_F(EventLogFile, TheFileOfAnInterruptedTrimIsDeletedAtTheNextStart) {
    WriteBytes(path, "old\r\n");
    WriteBytes(path + L".new", "half a cu");
    OpenEventLogFile(path);
    EXPECT_FALSE(FileExists(path + L".new"));
    EXPECT_EQ(AfterOpening("old\r\n"), "");
}

TEST_F(EventLogFile, ATrimLeavesNoOtherFile) {
    WriteBytes(path, Numbered(262145));
    OpenEventLogFile(path);
    EXPECT_FALSE(FileExists(path + L".new"));
}

TEST_F(EventLogFile, TheCrashLineIsStampedAndAppended) {
    OpenEventLogFile(path);
    LogInCrash(L"Crashed: \u00fc");
    EXPECT_EQ(AfterOpening(), "[21:04:07.031] Crashed: \xC3\xBC\r\n");
    EXPECT_EQ(LastLine(), L"[21:04:07.031] filler");
}

TEST_F(EventLogFile, WithoutAFileTheCrashLineIsDropped) {
    LogInCrash(L"Crashed");
    EXPECT_FALSE(FileExists(path));
}

TEST_F(EventLogFile, EveryLineOpensTheFileOnceForBinaryAppending) {
    OpenEventLogFile(path);
    g_opened.clear();
    LogEvent("one");
    LogEvent("two");
    EXPECT_EQ(g_opened, (std::vector<std::string>{"ab", "ab"}));
}

TEST_F(EventLogFile, OpeningReadsThenAppendsTheMarkerAndEveryHeldLine) {
    OpenEventLogFile(path);
    std::vector<std::string> expected = {"rb"};
    expected.resize(1 + 1 + 500, "ab");
    EXPECT_EQ(g_opened, expected);
}

TEST_F(EventLogFile, ATrimReadsThenRewritesThenAppends) {
    WriteBytes(path, Numbered(262145));
    OpenEventLogFile(path);
    std::vector<std::string> expected = {"rb", "wb"};
    expected.resize(2 + 1 + 500, "ab");
    EXPECT_EQ(g_opened, expected);
}

TEST_F(EventLogFile, ItIsNotHeldOpenBetweenLines) {
    WriteBytes(path, Numbered(262145));
    OpenEventLogFile(path);
    LogEvent("before");
    { const LockedFile exclusive(path); }  // fails if the log still has it open
    EXPECT_TRUE(DeleteFileW(path.c_str()));
    LogEvent("after");
    EXPECT_EQ(ReadBytes(path), "[21:04:07.031] after\r\n");
}
