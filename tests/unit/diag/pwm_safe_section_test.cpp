#include "diag/report_fixture.h"

namespace {

class PwmSafeSection : public SupportReport {};

}  // namespace

TEST_F(PwmSafeSection, AMachineWithoutControllableDisplaysHasItsLines) {
    EXPECT_EQ(Section(L"PWM-SAFE MODE"),
              L"=== PWM-SAFE MODE ===\r\n"
              L"Toggle:           OFF\r\n"
              L"Available:        no\r\n"
              L"Locked at 100%:   no\r\n"
              L"Pending verify:   no\r\n"
              L"At 100% / total:  0 of 0\r\n"
              L"\r\n");
}

TEST_F(PwmSafeSection, LockedOnABuiltInPanel) {
    state.pwmSafe = true;
    state.pwmTargetsPresent = true;
    state.pwmBuiltInOnly = true;
    state.pwmLockConfirmed = true;
    state.pwmTargetsAt100 = 1;
    state.pwmTargetCount = 1;
    state.pwmSavedBrightness = {{L"Built-in", 55}};
    EXPECT_EQ(Section(L"PWM-SAFE MODE"),
              L"=== PWM-SAFE MODE ===\r\n"
              L"Toggle:           ON\r\n"
              L"Available:        yes\r\n"
              L"Locked at 100%:   yes\r\n"
              L"Pending verify:   no\r\n"
              L"At 100% / total:  1 of 1\r\n"
              L"Target type:      built-in panel(s) only (WMI) - externals not controllable\r\n"
              L"Brightness snapshots taken on enable:\r\n"
              L"  Built-in -> 55\r\n"
              L"\r\n");
}

TEST_F(PwmSafeSection, EachFactHasItsOwnLine) {
    const auto expect = [&](const wchar_t* toggle, const wchar_t* available, const wchar_t* locked,
                            const wchar_t* pending) {
        EXPECT_EQ(After(L"Toggle:           "), toggle);
        EXPECT_EQ(After(L"Available:        "), available);
        EXPECT_EQ(After(L"Locked at 100%:   "), locked);
        EXPECT_EQ(After(L"Pending verify:   "), pending);
    };
    state.pwmSafe = true;
    expect(L"ON", L"no", L"no", L"no");
    state = AppState{};
    state.pwmTargetsPresent = true;
    expect(L"OFF", L"yes", L"no", L"no");
    state = AppState{};
    state.pwmLockConfirmed = true;
    expect(L"OFF", L"no", L"yes", L"no");
    state = AppState{};
    state.pwmVerifyPending = true;
    expect(L"OFF", L"no", L"no", L"yes");
}

TEST_F(PwmSafeSection, TheCountsAreThoseOfTheLastEnumeration) {
    state.pwmTargetsAt100 = 2;
    state.pwmTargetCount = 5;
    EXPECT_EQ(After(L"At 100% / total:  "), L"2 of 5");
}

TEST_F(PwmSafeSection, WithAnExternalDisplayTheTypeIsShown) {
    state.pwmTargetsPresent = true;
    EXPECT_EQ(After(L"Target type:      "), L"includes external display(s) (DDC/CI)");
}

TEST_F(PwmSafeSection, WithoutADisplayThereIsNoTypeLine) {
    state.pwmBuiltInOnly = true;
    EXPECT_FALSE(HasLine(L"Target type:"));
}

TEST_F(PwmSafeSection, SlowedRetriesAreShown) {
    EXPECT_FALSE(HasLine(L"Retry pace:"));
    state.pwmRetrySlowed = true;
    EXPECT_EQ(After(L"Retry pace:       "), L"slowed to 30s (display would not hold 100%)");
    EXPECT_TRUE(Section(L"PWM-SAFE MODE")
                    .ends_with(L"At 100% / total:  0 of 0\r\n"
                               L"Retry pace:       slowed to 30s (display would not hold 100%)\r\n\r\n"));
}

TEST_F(PwmSafeSection, SnapshotsAreShownEvenWithoutADisplay) {
    state.pwmSavedBrightness = {{L"Unplugged", 0}};
    EXPECT_TRUE(Section(L"PWM-SAFE MODE")
                    .ends_with(L"At 100% / total:  0 of 0\r\n"
                               L"Brightness snapshots taken on enable:\r\n"
                               L"  Unplugged -> 0\r\n\r\n"));
}

TEST_F(PwmSafeSection, WithoutSnapshotsTheirHeadingIsLeftOut) {
    state.pwmSafe = true;
    state.pwmTargetsPresent = true;
    EXPECT_FALSE(HasLine(L"Brightness snapshots"));
}

TEST_F(PwmSafeSection, SnapshotsAreOrderedByTheUtf16UnitsOfTheirNames) {
    // The moon starts with the code unit D83C and sorts before the full-width A; by characters it would sort
    // after it. Capitals sort before small letters, and a name before a longer one that starts with it.
    state.pwmSavedBrightness = {{L"\uFF21", 1}, {L"\U0001F319", 2}, {L"\u00e9", 3},
                                {L"alpha", 4},  {L"Zebra", 5},      {L"Zebra 2", 6},
                                {L"", 7},       {L"10", 8},         {L"9", 9}};
    EXPECT_TRUE(Section(L"PWM-SAFE MODE")
                    .ends_with(L"Brightness snapshots taken on enable:\r\n"
                               L"   -> 7\r\n"
                               L"  10 -> 8\r\n"
                               L"  9 -> 9\r\n"
                               L"  Zebra -> 5\r\n"
                               L"  Zebra 2 -> 6\r\n"
                               L"  alpha -> 4\r\n"
                               L"  \u00e9 -> 3\r\n"
                               L"  \U0001F319 -> 2\r\n"
                               L"  \uFF21 -> 1\r\n"
                               L"\r\n"));
}

TEST_F(PwmSafeSection, ASnapshotsNameIsCompleteAndUnformatted) {
    const std::wstring name = std::wstring(3000, L'N') + L" 100% %s%n";
    state.pwmSavedBrightness = {{name, 4294967295}};
    EXPECT_EQ(After(L"  " + name + L" -> "), L"4294967295");
}
