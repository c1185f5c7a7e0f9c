// The two logs at the report's end.
#include "diag/report_fixture.h"

namespace {

class LogSection : public SupportReport {
protected:
    // From the log's heading to the end.
    std::wstring Logs() const {
        const std::wstring report = Report();
        return report.substr(report.find(L"=== EVENT LOG"));
    }
};

constexpr wchar_t kPersistedHeading[] =
    L"\r\n=== PERSISTED LOG (last 40 lines; survives restarts, so boot\r\n"
    L"    sessions are visible; may repeat current-session lines) ===\r\n";
constexpr wchar_t kEnd[] = L"\r\n=== END DIAGNOSTICS ===\r\n";

}  // namespace

TEST_F(LogSection, WithoutLinesTheHeadingCountsNoneAndTheEndFollows) {
    EXPECT_EQ(Logs(), std::wstring(L"=== EVENT LOG (most recent 0, oldest first) ===\r\n") + kEnd);
}

TEST_F(LogSection, TheLinesAreInOrder) {
    facts.recentLines = {L"c", L"a", L"b"};
    EXPECT_EQ(Logs(),
              std::wstring(L"=== EVENT LOG (most recent 3, oldest first) ===\r\nc\r\na\r\nb\r\n") + kEnd);
}

TEST_F(LogSection, AFullRingOf500LinesIsComplete) {
    std::wstring expected = L"=== EVENT LOG (most recent 500, oldest first) ===\r\n";
    for (int i = 1; i <= 500; ++i) {
        facts.recentLines.push_back(L"[21:04:07.031] line " + std::to_wstring(i));
        expected += L"[21:04:07.031] line " + std::to_wstring(i) + L"\r\n";
    }
    EXPECT_EQ(Logs(), expected + kEnd);
}

TEST_F(LogSection, WithoutAPersistedLogItsSectionIsLeftOutAndTheEndStays) {
    facts.recentLines = {L"one"};
    EXPECT_EQ(Logs(), std::wstring(L"=== EVENT LOG (most recent 1, oldest first) ===\r\none\r\n") + kEnd);
}

TEST_F(LogSection, OnePersistedLineIsEnoughForTheSection) {
    facts.persistedLines = {L"yesterday"};
    EXPECT_EQ(Logs(), std::wstring(L"=== EVENT LOG (most recent 0, oldest first) ===\r\n") +
                          kPersistedHeading + L"yesterday\r\n" + kEnd);
}

TEST_F(LogSection, AnEmptyPersistedLineIsALine) {
    facts.persistedLines = {L""};
    EXPECT_EQ(Logs(), std::wstring(L"=== EVENT LOG (most recent 0, oldest first) ===\r\n") +
                          kPersistedHeading + L"\r\n" + kEnd);
}

TEST_F(LogSection, ThePersistedLinesFollowTheRecentOnesInTheFilesOrder) {
    facts.recentLines = {L"today"};
    std::wstring expected =
        std::wstring(L"=== EVENT LOG (most recent 1, oldest first) ===\r\ntoday\r\n") + kPersistedHeading;
    for (int i = 40; i > 0; --i) {
        facts.persistedLines.push_back(L"line " + std::to_wstring(i));
        expected += L"line " + std::to_wstring(i) + L"\r\n";
    }
    EXPECT_EQ(Logs(), expected + kEnd);
}

TEST_F(LogSection, LinesOfAnyLengthAndCharactersAreComplete) {
    const std::wstring line = L"100% %s%n \u65e5\U0001F319 " + std::wstring(16000, L'x') + L"!";
    facts.recentLines = {line};
    facts.persistedLines = {line};
    EXPECT_EQ(Logs(), L"=== EVENT LOG (most recent 1, oldest first) ===\r\n" + line + L"\r\n" +
                          kPersistedHeading + line + L"\r\n" + kEnd);
}
