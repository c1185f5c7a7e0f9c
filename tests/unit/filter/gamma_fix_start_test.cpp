// The click on the banner: a question, then the program's elevated run.
#include <gtest/gtest.h>

#include <algorithm>

#include "app/shell/refresh.h"
#include "app/state/app_state.h"
#include "filter/gamma_fix.h"
#include "filter/gamma_range.h"
#include "store/settings.h"
#include "support/call_record.h"
#include "support/fake_clock.h"
#include "support/seam.h"

#include <shellapi.h>

AMBREL_USES_SEAMS(recorded_log);
AMBREL_USES_SEAMS(recorded_timers);

AMBREL_REPLACE(bool, IsGammaRangeExpanded, ()) {
    Record("read registry");
    return false;
}
AMBREL_REPLACE(void, SaveSettings, ()) {
    Record("save settings");
}
AMBREL_REPLACE(void, RefreshPopupAndTray, ()) {
    Record("refresh");
}

namespace {

HWND const kWindow = MakeHandle<HWND>(500);

int g_answer = IDYES;
INT_PTR g_shellResult = 42;
ULONGLONG g_promptDuration = 0;  // ms until the user answers the elevation prompt
std::wstring g_ownPath;

int WINAPI FakeMessageBox(HWND owner, const wchar_t* text, const wchar_t* title, UINT type) {
    EXPECT_EQ(owner, kWindow);
    Record("box ", type, " ", Narrow(title), ": ", Narrow(text));
    return g_answer;
}

// The C runtime also calls it, before the objects of the test are constructed.
DWORD WINAPI FakeGetModuleFileName(HMODULE module, wchar_t* path, DWORD capacity) {
    if (g_ownPath.empty()) return 0;
    EXPECT_EQ(module, nullptr);
    EXPECT_EQ(capacity, 260U);
    EXPECT_TRUE(std::all_of(path, path + capacity, [](wchar_t each) { return each == 0; }));
    Record("own path");
    const std::size_t copied = g_ownPath.copy(path, capacity);
    return static_cast<DWORD>(copied);
}

HINSTANCE WINAPI FakeShellExecute(HWND owner, const wchar_t* verb, const wchar_t* file,
                                  const wchar_t* parameters, const wchar_t* folder, int show) {
    EXPECT_EQ(owner, kWindow);
    EXPECT_EQ(folder, nullptr);
    Record("execute ", Narrow(verb), " [", Narrow(file), "] [", Narrow(parameters), "] show ", show);
    g_tick += g_promptDuration;
    return MakeHandle<HINSTANCE>(static_cast<std::uintptr_t>(g_shellResult));
}

const std::string kQuestion =
    "box 36 Ambrel: Some of your settings are being blocked by Windows.\n\n"
    "Ambrel can fix this with your permission. A restart\n"
    "is needed afterwards.\n\n"
    "Fix it now?";
const std::string kAlreadyDone =
    "box 64 Ambrel: The fix is already done. Just restart your computer\n"
    "to finish. Use Restart, not Shut down.";
const std::string kExecute = "execute runas [C:\\Tools\\ambrel.exe] [--expand-gamma-range] show 1";
const CallRecord kLaunched = {kQuestion, "own path", kExecute, "set timer 8 2000",
                              "log: Gamma-range fix helper launched (elevation requested)"};

class GammaFixStart : public testing::Test {
protected:
    void SetUp() override {
        g_app = AppState{};
        g_app.mainWindow = kWindow;
        g_calls.clear();
        g_answer = IDYES;
        g_shellResult = 42;
        g_tick = 5'000'000;
        g_promptDuration = 0;
        g_ownPath = L"C:\\Tools\\ambrel.exe";
    }
    void TearDown() override { g_ownPath.clear(); }

    static CallRecord CallsOfFailing(INT_PTR result) {
        g_calls.clear();
        g_shellResult = result;
        StartGammaRangeFix();
        return g_calls;
    }

    static CallRecord Failed(const std::string& code) {
        return {kQuestion, "own path", kExecute,
                "log: Gamma-range fix helper failed to launch (rc=" + code + ")"};
    }
};

}  // namespace

AMBREL_SEAM(MessageBoxW, FakeMessageBox);
AMBREL_SEAM(GetModuleFileNameW, FakeGetModuleFileName);
AMBREL_SEAM(ShellExecuteW, FakeShellExecute);

TEST_F(GammaFixStart, YesLaunchesTheProgramElevatedAndStartsThePoll) {
    StartGammaRangeFix();
    EXPECT_EQ(g_calls, kLaunched);
    EXPECT_TRUE(g_app.gammaFixPending);
    EXPECT_EQ(g_app.gammaFixDeadline, 5'120'000U);
    EXPECT_FALSE(g_app.gammaRangeExpanded);
    EXPECT_EQ(g_app.gammaFixEpoch, 0U);
}

TEST_F(GammaFixStart, TheTwoMinutesStartWhenTheElevationPromptCloses) {
    g_promptDuration = 90'000;
    StartGammaRangeFix();
    EXPECT_EQ(g_app.gammaFixDeadline, 5'210'000U);
}

TEST_F(GammaFixStart, AnythingButYesStops) {
    for (const int answer : {IDNO, IDCANCEL, IDOK, 0}) {
        g_calls.clear();
        g_answer = answer;
        StartGammaRangeFix();
        EXPECT_EQ(g_calls, (CallRecord{kQuestion})) << answer;
        EXPECT_FALSE(g_app.gammaFixPending);
        EXPECT_EQ(g_app.gammaFixDeadline, 0U);
    }
}

TEST_F(GammaFixStart, WithTheFixAppliedOnlyARestartIsRequested) {
    g_app.gammaRangeExpanded = true;
    g_app.gammaFixEpoch = 77;
    StartGammaRangeFix();
    EXPECT_EQ(g_calls, (CallRecord{kAlreadyDone}));
    EXPECT_FALSE(g_app.gammaFixPending);
    EXPECT_EQ(g_app.gammaFixEpoch, 77U);
}

TEST_F(GammaFixStart, AResultOf33IsALaunch) {
    g_shellResult = 33;
    StartGammaRangeFix();
    EXPECT_EQ(g_calls, kLaunched);
}

TEST_F(GammaFixStart, AResultOf32OrLessIsLoggedAndNothingElse) {
    EXPECT_EQ(CallsOfFailing(32), Failed("32"));
    EXPECT_EQ(CallsOfFailing(5), Failed("5")) << "the elevation was refused";
    EXPECT_EQ(CallsOfFailing(2), Failed("2"));
    EXPECT_EQ(CallsOfFailing(0), Failed("0"));
    EXPECT_FALSE(g_app.gammaFixPending);
    EXPECT_EQ(g_app.gammaFixDeadline, 0U);
    EXPECT_FALSE(g_app.gammaRangeExpanded);
}

TEST_F(GammaFixStart, APathWithSpacesAndAccentsIsPassedUnchanged) {
    g_ownPath = L"C:\\Program Files\\Ambr\u00e9l (1)\\ambrel.exe";
    StartGammaRangeFix();
    EXPECT_EQ(g_calls[2],
              "execute runas [C:\\Program Files\\Ambr?l (1)\\ambrel.exe] [--expand-gamma-range] show 1");
}

TEST_F(GammaFixStart, APathThatDoesNotFitIsNotLaunchedAndIsLoggedAsNotFound) {
    for (const std::size_t length : {257U, 400U}) {
        g_calls.clear();
        g_ownPath = L"C:\\" + std::wstring(length, L'p');
        StartGammaRangeFix();
        EXPECT_EQ(g_calls,
                  (CallRecord{kQuestion, "own path", "log: Gamma-range fix helper failed to launch (rc=2)"}));
        EXPECT_FALSE(g_app.gammaFixPending);
    }
}

TEST_F(GammaFixStart, ASecondClickLaunchesAgainAndRestartsTheTimeOut) {
    StartGammaRangeFix();
    g_calls.clear();
    g_tick += 100'000;
    StartGammaRangeFix();
    EXPECT_EQ(g_calls, kLaunched);
    EXPECT_TRUE(g_app.gammaFixPending);
    EXPECT_EQ(g_app.gammaFixDeadline, 5'220'000U);
}

TEST_F(GammaFixStart, ASecondLaunchThatFailsDoesNotStopThePollOfTheFirst) {
    StartGammaRangeFix();
    g_tick += 100'000;
    EXPECT_EQ(CallsOfFailing(5), Failed("5"));
    EXPECT_TRUE(g_app.gammaFixPending);
    EXPECT_EQ(g_app.gammaFixDeadline, 5'120'000U);

    g_calls.clear();
    g_answer = IDNO;
    StartGammaRangeFix();
    EXPECT_EQ(g_calls, (CallRecord{kQuestion}));
    EXPECT_TRUE(g_app.gammaFixPending);
    EXPECT_EQ(g_app.gammaFixDeadline, 5'120'000U);
}
