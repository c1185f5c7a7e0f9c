#include "store/log_fixture.h"

namespace {

class EventLogRing : public log_fixture::EventLogTest {};

}  // namespace

TEST_F(EventLogRing, ALineIsStampedWithTheLocalTimeOfDay) {
    LogEvent("Saved settings");
    EXPECT_EQ(LastLine(), L"[21:04:07.031] Saved settings");
}

TEST_F(EventLogRing, TheStampIsPaddedWithZeros) {
    SetTime(0, 0, 0, 0);
    LogEvent("midnight");
    EXPECT_EQ(LastLine(), L"[00:00:00.000] midnight");
    SetTime(1, 2, 3, 4);
    LogEvent("early");
    EXPECT_EQ(LastLine(), L"[01:02:03.004] early");
    SetTime(23, 59, 59, 999);
    LogEvent("late");
    EXPECT_EQ(LastLine(), L"[23:59:59.999] late");
}

TEST_F(EventLogRing, ArgumentsAreFormatted) {
    LogEvent("PWM-safe: lock pending (%d of %d at 100%%) - poll will re-assert", 1, 2);
    EXPECT_EQ(LastLine(), L"[21:04:07.031] PWM-safe: lock pending (1 of 2 at 100%) - poll will re-assert");
    LogEvent("path %ls, %.3f, %llu, %lu", L"C:\\a", 0.385, 18446744073709551615ull, 4294967295ul);
    EXPECT_EQ(LastLine(), L"[21:04:07.031] path C:\\a, 0.385, 18446744073709551615, 4294967295");
}

TEST_F(EventLogRing, APercentInAnArgumentIsPlainText) {
    LogEvent("%ls", L"C:\\100%s\\%n%d");
    EXPECT_EQ(LastLine(), L"[21:04:07.031] C:\\100%s\\%n%d");
}

TEST_F(EventLogRing, AMessageThatIsNotFormattedKeepsItsPercentSigns) {
    AppendLogLine(L"100% %d %s");
    EXPECT_EQ(LastLine(), L"[21:04:07.031] 100% %d %s");
}

TEST_F(EventLogRing, LinesAreReadOldestFirst) {
    LogEvent("one");
    LogEvent("two");
    LogEvent("three");
    const std::vector<std::wstring> ring = ReadLogRing();
    ASSERT_EQ(ring.size(), 500u);
    EXPECT_EQ(ring[496], L"[21:04:07.031] filler");
    EXPECT_EQ(ring[497], L"[21:04:07.031] one");
    EXPECT_EQ(ring[498], L"[21:04:07.031] two");
    EXPECT_EQ(ring[499], L"[21:04:07.031] three");
}

TEST_F(EventLogRing, The501stLineReplacesTheFirst) {
    for (int i = 1; i <= 500; ++i)
        LogEvent("line %d", i);
    std::vector<std::wstring> ring = ReadLogRing();
    ASSERT_EQ(ring.size(), 500u);
    EXPECT_EQ(ring.front(), L"[21:04:07.031] line 1");
    EXPECT_EQ(ring.back(), L"[21:04:07.031] line 500");

    LogEvent("line %d", 501);
    ring = ReadLogRing();
    ASSERT_EQ(ring.size(), 500u);
    EXPECT_EQ(ring.front(), L"[21:04:07.031] line 2");
    EXPECT_EQ(ring.back(), L"[21:04:07.031] line 501");
}

TEST_F(EventLogRing, ItNeverContainsMoreThan500Lines) {
    for (int i = 1; i <= 1234; ++i) {
        LogEvent("line %d", i);
        ASSERT_EQ(ReadLogRing().size(), 500u);
    }
    EXPECT_EQ(ReadLogRing().front(), L"[21:04:07.031] line 735");
}

TEST_F(EventLogRing, AMessageOf600CharactersIsTruncatedTo511) {
    std::wstring message;
    for (int i = 0; i < 600; ++i)
        message += static_cast<wchar_t>(L'a' + i % 26);
    LogEvent("%ls", message.c_str());
    EXPECT_EQ(LastLine(), L"[21:04:07.031] " + message.substr(0, 511));
}

TEST_F(EventLogRing, AMessageOf511CharactersIsComplete) {
    const std::wstring message = std::wstring(510, L'x') + L"y";
    LogEvent("%ls", message.c_str());
    EXPECT_EQ(LastLine(), L"[21:04:07.031] " + message);
}

TEST_F(EventLogRing, AMessageOf512CharactersLosesItsLast) {
    const std::wstring message = std::wstring(511, L'x') + L"y";
    LogEvent("%ls", message.c_str());
    EXPECT_EQ(LastLine(), L"[21:04:07.031] " + std::wstring(511, L'x'));
}

TEST_F(EventLogRing, AMessageOf30000CharactersIsTruncatedTo511) {
    const std::wstring message(30000, L'\u00e9');
    LogEvent("command line %ls", message.c_str());
    EXPECT_EQ(LastLine(), L"[21:04:07.031] command line " + std::wstring(498, L'\u00e9'));
}

TEST_F(EventLogRing, AnEmptyMessageIsALineWithItsStamp) {
    LogEvent("%ls", L"");
    EXPECT_EQ(LastLine(), L"[21:04:07.031] ");
}

TEST_F(EventLogRing, LettersOutsideAsciiAreKept) {
    LogEvent("%ls", L"C:\\Jos\u00e9\\\u65e5\u672c\\\U0001F319");
    EXPECT_EQ(LastLine(), L"[21:04:07.031] C:\\Jos\u00e9\\\u65e5\u672c\\\U0001F319");
}

TEST_F(EventLogRing, WithoutAFileNoFileIsTouched) {
    LogEvent("nowhere");
    EXPECT_TRUE(log_fixture::g_opened.empty());
    EXPECT_FALSE(FileExists(path));
}

TEST_F(EventLogRing, AReadCopyDoesNotChangeWithLaterLines) {
    const std::vector<std::wstring> before = ReadLogRing();
    LogEvent("later");
    EXPECT_EQ(before.back(), L"[21:04:07.031] filler");
}

TEST_F(EventLogRing, TheClockIsReadOncePerLine) {
    log_fixture::g_ticksPerReading = 1;
    LogEvent("one");
    LogEvent("two");
    const std::vector<std::wstring> ring = ReadLogRing();
    EXPECT_EQ(ring[498], L"[21:04:07.031] one");
    EXPECT_EQ(ring[499], L"[21:04:07.032] two");
}
