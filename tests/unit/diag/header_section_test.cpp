// The mail's header, the subject, and the section about the program itself.
#include "diag/report_fixture.h"
#include "res/version.h"

namespace {

class HeaderSection : public SupportReport {};

// Uptimes: the time since the start and its text.
struct Uptime {
    std::uint64_t elapsed;  // ms
    const wchar_t* text;
};

}  // namespace

TEST_F(HeaderSection, TheSubjectNamesVersionMachineSystemAndBuild) {
    EXPECT_EQ(SupportSubjectText(facts),
              L"Ambrel Windows " AMBREL_VERSION L" - Feedback (0123456789abcdef, Windows 11 Pro b22631)");
}

TEST_F(HeaderSection, TheSubjectOfASystemWithoutANameContainsWindows) {
    facts.os.productName.clear();
    EXPECT_EQ(SupportSubjectText(facts),
              L"Ambrel Windows " AMBREL_VERSION L" - Feedback (0123456789abcdef, Windows b22631)");
}

TEST_F(HeaderSection, TheMachineTagHasSixteenLowercaseDigits) {
    const auto tag = [&](std::uint64_t value) {
        facts.machineTag = value;
        const std::wstring subject = SupportSubjectText(facts);
        const std::size_t start = subject.find(L'(') + 1;
        return subject.substr(start, subject.find(L',') - start);
    };
    EXPECT_EQ(tag(0), L"0000000000000000");
    EXPECT_EQ(tag(0xA), L"000000000000000a");
    EXPECT_EQ(tag(0x80000000), L"0000000080000000");
    EXPECT_EQ(tag(0xFEDCBA9876543210), L"fedcba9876543210");
    EXPECT_EQ(tag(0xFFFFFFFFFFFFFFFF), L"ffffffffffffffff");
}

TEST_F(HeaderSection, TheBuildIsPrintedUnsigned) {
    facts.os.build = 4294967295;
    EXPECT_TRUE(SupportSubjectText(facts).ends_with(L" b4294967295)"));
}

TEST_F(HeaderSection, AnOsNameOf4KilobytesIsComplete) {
    facts.os.productName = std::wstring(2046, L'W') + L"!";
    EXPECT_EQ(SupportSubjectText(facts),
              L"Ambrel Windows " AMBREL_VERSION L" - Feedback (0123456789abcdef, " + facts.os.productName +
                  L" b22631)");
    EXPECT_EQ(After(L"SUBJECT: "), SupportSubjectText(facts));
    EXPECT_EQ(After(L"OS:             "), facts.os.productName);
}

TEST_F(HeaderSection, ThePercentSignsOfAnOsNameArePlainText) {
    facts.os.productName = L"100% %s %n %d";
    EXPECT_EQ(SupportSubjectText(facts),
              L"Ambrel Windows " AMBREL_VERSION L" - Feedback (0123456789abcdef, 100% %s %n %d b22631)");
}

TEST_F(HeaderSection, TheReportStartsWithAddressSubjectAndTheUsersSpace) {
    const std::wstring header =
        L"TO: support@ambrel.example\r\n"
        L"SUBJECT: Ambrel Windows " AMBREL_VERSION
        L" - Feedback (0123456789abcdef, Windows 11 Pro b22631)\r\n\r\n"
        L"===============================================================\r\n"
        L"  PASTE THIS INTO A NEW EMAIL TO support@ambrel.example\r\n"
        L"===============================================================\r\n\r\n"
        L">> DESCRIBE WHAT'S HAPPENING ABOVE THIS LINE <<\r\n\r\n\r\n\r\n"
        L">> AUTOMATIC DIAGNOSTICS - DO NOT EDIT BELOW THIS LINE <<\r\n\r\n"
        L"=== APP ===\r\n";
    EXPECT_EQ(Report().substr(0, header.size()), header);
}

TEST_F(HeaderSection, TheAppSectionHasVersionAndTime) {
    EXPECT_EQ(
        Section(L"APP"),
        L"=== APP ===\r\nVersion:        " AMBREL_VERSION L"\r\nNow:            2026-03-07 09:05:02\r\n\r\n");
}

TEST_F(HeaderSection, TheSessionsUptimeFollowsTheTime) {
    state.startTick = facts.tick - 42000;
    EXPECT_EQ(Section(L"APP"),
              L"=== APP ===\r\nVersion:       "
              L" " AMBREL_VERSION L"\r\nNow:            2026-03-07 09:05:02\r\nSession uptime: 42s\r\n\r\n");
}

TEST_F(HeaderSection, TheTimeIsPaddedWithZeros) {
    facts.now = {.wYear = 987,
                 .wMonth = 1,
                 .wDayOfWeek = 4,
                 .wDay = 2,
                 .wHour = 3,
                 .wMinute = 4,
                 .wSecond = 5,
                 .wMilliseconds = 678};
    EXPECT_EQ(After(L"Now:            "), L"0987-01-02 03:04:05");
}

TEST_F(HeaderSection, TheLastSecondOfAYearIsShown) {
    facts.now.wYear = 2029;
    facts.now.wMonth = 12;
    facts.now.wDay = 31;
    facts.now.wHour = 23;
    facts.now.wMinute = 59;
    facts.now.wSecond = 59;
    EXPECT_EQ(After(L"Now:            "), L"2029-12-31 23:59:59");
}

TEST_F(HeaderSection, WithoutAStartTickThereIsNoUptimeLine) {
    state.startTick = 0;
    EXPECT_FALSE(HasLine(L"Session uptime: "));
}

TEST_F(HeaderSection, AStartTickOfOneIsEnoughForTheUptimeLine) {
    state.startTick = 1;
    facts.tick = 59001;
    EXPECT_EQ(After(L"Session uptime: "), L"59s");
}

TEST_F(HeaderSection, AnUptimeOfZeroIsZeroSeconds) {
    state.startTick = facts.tick;
    EXPECT_EQ(After(L"Session uptime: "), L"0s");
}

TEST_F(HeaderSection, AnUptimeUnderAMinuteShowsSeconds) {
    state.startTick = 1;
    for (const Uptime& uptime : {Uptime{999, L"0s"}, {1000, L"1s"}, {59000, L"59s"}, {59999, L"59s"}}) {
        facts.tick = 1 + uptime.elapsed;
        EXPECT_EQ(After(L"Session uptime: "), uptime.text) << uptime.elapsed;
    }
}

TEST_F(HeaderSection, AnUptimeOf61SecondsShowsMinutesAndSeconds) {
    state.startTick = 1;
    for (const Uptime& uptime :
         {Uptime{60000, L"1m 0s"}, {61000, L"1m 1s"}, {3599000, L"59m 59s"}, {3599999, L"59m 59s"}}) {
        facts.tick = 1 + uptime.elapsed;
        EXPECT_EQ(After(L"Session uptime: "), uptime.text) << uptime.elapsed;
    }
}

TEST_F(HeaderSection, AnUptimeOfThreeHoursShowsHoursAndMinutes) {
    state.startTick = 1;
    for (const Uptime& uptime :
         {Uptime{3600000, L"1h 0m"}, {10800000, L"3h 0m"}, {10859999, L"3h 0m"}, {86399999, L"23h 59m"}}) {
        facts.tick = 1 + uptime.elapsed;
        EXPECT_EQ(After(L"Session uptime: "), uptime.text) << uptime.elapsed;
    }
}

TEST_F(HeaderSection, AnUptimeOfExactlyOneDayShowsDaysHoursAndMinutes) {
    state.startTick = 1;
    for (const Uptime& uptime : {Uptime{86400000, L"1d 0h 0m"},
                                 {86460000, L"1d 0h 1m"},
                                 {93784005, L"1d 2h 3m"},
                                 {172799999, L"1d 23h 59m"},
                                 {172800000, L"2d 0h 0m"}}) {
        facts.tick = 1 + uptime.elapsed;
        EXPECT_EQ(After(L"Session uptime: "), uptime.text) << uptime.elapsed;
    }
}

TEST_F(HeaderSection, AnUptimeOfCenturiesDoesNotOverflow) {
    state.startTick = 1;
    facts.tick = 8640000000000000001;
    EXPECT_EQ(After(L"Session uptime: "), L"100000000000d 0h 0m");
}

TEST_F(HeaderSection, AnUptimePastThe32BitTickIsShown) {
    state.startTick = 4294960000;
    facts.tick = 4294967296 + 53704;  // 61 s later
    EXPECT_EQ(After(L"Session uptime: "), L"1m 1s");
}
