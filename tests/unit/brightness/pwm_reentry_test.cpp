// Messages that are dispatched while an operation waits for the displays. Each operation of the controller is
// interrupted once at every moment at which it waits, by each message that can arrive then. Afterwards these
// invariants must hold:
//
// - No list is used while it is being filled (the fake displays check this).
// - A display is set to 100 or to its brightness before the lock, and the latter is the saved value.
// - After the operation, timer 4 runs exactly while the mode is on, and timer 5 exactly while a verification
//   is pending. While the mode is off there is no verification, confirmation or saved value.
// - Every display can be restored: while the mode is on, its previous brightness is saved or is its current
//   brightness; while the mode is off, and after the end of the program, it is its current brightness.
// - The mode is the one that was saved last.
//
// A toggle or a display change during an operation is deferred until the operation ends. COM leaves mouse
// messages in the queue, so no click is dispatched during an operation, but assistive technology may toggle
// the mode at any moment.
#include <algorithm>
#include <iterator>
#include <random>

#include "app/state/messages.h"
#include "app/state/timers.h"
#include "brightness/pwm_fixture.h"
#include "brightness/simulated_timers.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);

namespace {

int g_posted = 0;
bool g_modeAtCall = false;

BOOL WINAPI FakePostMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    EXPECT_EQ(window, g_app.mainWindow);
    EXPECT_EQ(message, kMessagePwmSafeDeferred);
    EXPECT_EQ(wParam, 0U);
    EXPECT_EQ(lParam, 0);
    g_posted += 1;
    return TRUE;
}

void DeliverPosted() {
    for (; g_posted > 0; --g_posted)
        PerformDeferredPwmRequest();
}

void EndTheSession() {
    g_app.ending = true;
    StopTimer(TimerId::DisplaySettle);
    SuspendPwmSafe();
    ReleasePwmSafeLock();
}

void FirePoll() {
    if (g_timers.count(4) != 0) RefreshPwmSafeTargets(true);
}

void FireVerification() {
    if (g_timers.count(5) != 0) VerifyPwmLock();
}

void FireDisplayChange() {
    StopTimer(TimerId::DisplaySettle);
    ReassertPwmSafeAfterChange();
}

void PassTime(std::uint64_t duration) {
    const std::uint64_t until = g_clock + duration;
    while (const std::uintptr_t id = NextDueTimer(until)) {
        if (id == 4) FirePoll();
        if (id == 5) FireVerification();
        if (id == 2) FireDisplayChange();
    }
}

void StartLockedByClick() {
    TogglePwmSafeByUser();
    PassTime(1000);
}

struct Operation {
    const char* name;
    void (*prepare)();
    void (*run)();
};

const Operation kOperations[] = {
    {"switching on", [] {}, TogglePwmSafeByUser},
    {"switching off", StartLockedByClick, TogglePwmSafeByUser},
    {"switching off while verifying", TogglePwmSafeByUser, TogglePwmSafeByUser},
    {"a poll that finds the lock", StartLockedByClick, FirePoll},
    {"a poll that finds a lost lock",
     [] {
         StartLockedByClick();
         Display(L"A").percent = 20;
     },
     FirePoll},
    {"a verification that succeeds", TogglePwmSafeByUser, FireVerification},
    {"a verification that reverts the user's switch",
     [] {
         Display(L"A").maximumPercent = 90;
         TogglePwmSafeByUser();
     },
     FireVerification},
    {"a verification that fails otherwise",
     [] {
         StartLockedByClick();
         Display(L"A").maximumPercent = 90;
         Display(L"A").percent = 20;
         FirePoll();
     },
     FireVerification},
    {"a display change", StartLockedByClick, FireDisplayChange},
    {"a display change while the user's switch is verified", TogglePwmSafeByUser, FireDisplayChange},
    {"showing the popup", StartLockedByClick, [] { RefreshPwmSafeTargets(false); }},
    {"the start with a saved lock", [] { g_app.pwmSafe = true; }, RestorePwmSafeFromSettings},
    {"the end of the session", StartLockedByClick, EndTheSession},
};

// Two polls for one end of the session, so that few runs end early.
void (*const kMessages[])() = {FirePoll,
                               FirePoll,
                               FireVerification,
                               [] { RefreshPwmSafeTargets(false); },
                               TogglePwmSafeByUser,
                               FireDisplayChange,
                               EndTheSession};

class PwmReentry : public PwmFixture {
protected:
    using Message = void (*)();

    // Interrupts every operation at each of its moments in turn.
    void InterruptEverything(Message message);
    // The same by a call that no message makes at that moment. Only the values are checked.
    void InterruptEverythingUnexpectedly(Message message);
    // Interrupts one operation at random moments by random messages, which are interrupted in the same way.
    void InterruptAtRandom(std::uint32_t seed);
    void Prepare(const Operation& operation);
    int Interrupt(const Operation& operation, int at, Message message);

    bool modeAtStart_ = false;

private:
    void ExpectKnownValues();
    void ExpectConsistent();
    void ExpectConsistentNowAndLater();
    static bool LastSaved();

    static constexpr std::uint32_t kPanelBefore = 30;
    static constexpr std::uint32_t kMonitorBefore = 60;
    static std::uint32_t Before(const std::wstring& name) {
        return name == L"P" ? kPanelBefore : kMonitorBefore;
    }
};

void PwmReentry::Prepare(const Operation& operation) {
    StartWithoutDisplays();
    g_clock = 0;
    g_timers.clear();
    g_displays = {{.name = L"P", .percent = kPanelBefore, .kind = TargetKind::WmiPanel},
                  {.name = L"A", .percent = kMonitorBefore}};
    g_posted = 0;
    operation.prepare();
    modeAtStart_ = g_app.pwmSafe;
    g_calls.clear();
    g_sets.clear();
}

// The mode in the settings file.
bool PwmReentry::LastSaved() {
    for (auto call = g_calls.rbegin(); call != g_calls.rend(); ++call) {
        if (*call == "save on") return true;
        if (*call == "save off") return false;
    }
    return false;
}

// Runs the operation with the message at its moment number `at`, counted from 0. Returns how many there were.
int PwmReentry::Interrupt(const Operation& operation, int at, Message message) {
    Prepare(operation);
    g_calls.push_back(modeAtStart_ ? "save on" : "save off");
    int moment = 0;
    bool dispatching = false;
    g_whileWaiting = [&](Moment) {
        if (dispatching || moment++ != at) return;
        Record("{");
        dispatching = true;
        message();
        dispatching = false;
        Record("}");
    };
    operation.run();
    g_whileWaiting = nullptr;
    DeliverPosted();
    return moment;
}

void PwmReentry::ExpectKnownValues() {
    for (const DisplaySet& set : g_sets)
        EXPECT_TRUE(set.percent == 100 || set.percent == Before(set.name))
            << Narrow(set.name) << " := " << set.percent;
    for (const auto& [name, percent] : g_app.pwmSavedBrightness)
        EXPECT_EQ(percent, Before(name)) << "is saved for " << Narrow(name);
}

void PwmReentry::ExpectConsistent() {
    ExpectKnownValues();
    const bool locking = g_app.pwmSafe && !g_app.ending;
    EXPECT_EQ(g_timers.count(4), locking ? 1U : 0U);
    EXPECT_EQ(g_timers.count(5), locking && g_app.pwmVerifyPending ? 1U : 0U);
    EXPECT_TRUE(!g_app.pwmVerifyPending || g_app.pwmSafe) << "a verification without the mode";
    EXPECT_TRUE(!g_app.pwmVerifyIsUserToggle || g_app.pwmVerifyPending)
        << "a verification of the user's switch without a verification";
    EXPECT_TRUE(!g_app.pwmLockConfirmed || g_app.pwmSafe) << "a confirmation without the mode";
    EXPECT_TRUE(locking || g_app.pwmSavedBrightness.empty()) << "a saved value without the mode";
    EXPECT_EQ(g_app.pwmSafe, LastSaved()) << "the mode is not the saved one";
    for (const FakeDisplay& display : g_displays) {
        const bool saved = locking && g_app.pwmSavedBrightness.count(display.name) != 0;
        if (saved) continue;
        EXPECT_EQ(display.percent, Before(display.name)) << Narrow(display.name) << ", not saved";
    }
}

void PwmReentry::ExpectConsistentNowAndLater() {
    ExpectConsistent();
    if (g_app.ending) return;
    // From here on nothing interrupts.
    PassTime(5000);
    ExpectConsistent();
    if (g_app.pwmSafe) TogglePwmSafeByUser();
    ExpectConsistent();
}

std::string CallsSoFar() {
    std::string calls;
    for (const std::string& call : g_calls)
        calls += "\n  " + call;
    return calls;
}

void PwmReentry::InterruptAtRandom(std::uint32_t seed) {
    std::mt19937 random(seed);
    const Operation& operation = kOperations[random() % std::size(kOperations)];
    Prepare(operation);
    g_calls.push_back(modeAtStart_ ? "save on" : "save off");
    const std::uint32_t rarity = 2 + random() % 10;
    int depth = 0;
    g_whileWaiting = [&](Moment) {
        if (depth == 2 || random() % rarity != 0) return;
        Record("{");
        depth += 1;
        kMessages[random() % std::size(kMessages)]();
        depth -= 1;
        Record("}");
    };
    operation.run();
    g_whileWaiting = nullptr;
    DeliverPosted();
    const std::string calls = CallsSoFar();
    ExpectConsistentNowAndLater();
    ASSERT_FALSE(HasFailure()) << "seed " << seed << ", " << operation.name << ":" << calls;
}

void PwmReentry::InterruptEverythingUnexpectedly(Message message) {
    for (const Operation& operation : kOperations) {
        int moments = 1;
        for (int at = 0; at < moments; ++at) {
            moments = std::max(moments, Interrupt(operation, at, message));
            ExpectKnownValues();
            PassTime(5000);
            ExpectKnownValues();
            ASSERT_FALSE(HasFailure()) << operation.name << ", interrupted at moment " << at;
        }
    }
}

void PwmReentry::InterruptEverything(Message message) {
    for (const Operation& operation : kOperations) {
        // There is no moment -1: the first run is not interrupted.
        int moments = Interrupt(operation, -1, message);
        ExpectConsistentNowAndLater();
        EXPECT_GE(moments, 3) << operation.name;
        for (int at = 0; at < moments; ++at) {
            moments = std::max(moments, Interrupt(operation, at, message));
            const std::string calls = CallsSoFar();
            ExpectConsistentNowAndLater();
            ASSERT_FALSE(HasFailure()) << operation.name << ", interrupted at moment " << at << ":" << calls;
        }
    }
}

}  // namespace

AMBREL_SEAM(PostMessageW, FakePostMessage);

TEST_F(PwmReentry, PollAtAnyMoment) {
    InterruptEverything(FirePoll);
}

TEST_F(PwmReentry, VerificationAtAnyMoment) {
    InterruptEverything(FireVerification);
}

TEST_F(PwmReentry, ShowingThePopupAtAnyMoment) {
    InterruptEverything([] { RefreshPwmSafeTargets(false); });
}

TEST_F(PwmReentry, ToggleAtAnyMoment) {
    InterruptEverything(TogglePwmSafeByUser);
}

TEST_F(PwmReentry, AToggleDuringAnyOperationDeterminesTheMode) {
    for (const Operation& operation : kOperations) {
        int moments = 1;
        for (int at = 0; at < moments; ++at) {
            moments = Interrupt(operation, at, [] {
                g_modeAtCall = g_app.pwmSafe;
                TogglePwmSafeByUser();
            });
            EXPECT_TRUE(g_app.ending || g_app.pwmSafe == !g_modeAtCall)
                << operation.name << ", moment " << at;
        }
    }
}

TEST_F(PwmReentry, RepeatedTogglesRequestTheSameModeAsTheFirst) {
    Prepare(kOperations[3]);
    ASSERT_TRUE(g_app.pwmSafe);
    bool clicked = false;
    g_whileWaiting = [&](Moment) {
        if (clicked) return;
        clicked = true;
        TogglePwmSafeByUser();
        TogglePwmSafeByUser();
    };
    FirePoll();
    EXPECT_TRUE(clicked);
    EXPECT_EQ(g_posted, 1);
    DeliverPosted();
    EXPECT_FALSE(g_app.pwmSafe);
    EXPECT_EQ(g_posted, 0);
}

TEST_F(PwmReentry, ADisplayChangeIsDeferredUntilTheOperationEnds) {
    Prepare(kOperations[3]);
    g_app.pwmRetrySlowed = true;
    g_whileWaiting = [](Moment moment) {
        if (moment != Moment::DuringListing) return;
        g_whileWaiting = nullptr;
        FireDisplayChange();
    };
    FirePoll();
    ASSERT_EQ(g_posted, 1);
    EXPECT_EQ(During(DeliverPosted),
              (CallRecord{"enumerate", "count", "log: PWM-safe: display change - retry pace reset",
                          "enumerate", "count", "P := 100", "A := 100"}));
    EXPECT_FALSE(g_app.pwmRetrySlowed);
    EXPECT_EQ(g_posted, 0);
}

// Timer 5 may have fired before the click that kills it is handled.
TEST_F(PwmReentry, AVerificationDuringSwitchingOffIsNotRestarted) {
    Prepare(kOperations[2]);
    ASSERT_TRUE(g_app.pwmVerifyPending);
    g_whileWaiting = [](Moment) { VerifyPwmLock(); };
    TogglePwmSafeByUser();
    g_whileWaiting = nullptr;
    EXPECT_EQ(g_timers.count(5), 0U);
}

TEST_F(PwmReentry, SwitchingOnIsSavedForTheNextStartIfTheSessionEndsDuringIt) {
    Prepare(kOperations[0]);
    g_whileWaiting = [](Moment moment) {
        if (moment != Moment::BeforeSet || g_app.ending) return;
        EndTheSession();
    };
    TogglePwmSafeByUser();
    g_whileWaiting = nullptr;
    EXPECT_EQ(g_calls.back(), "save on");
    EXPECT_EQ(Display(L"P").percent, 30U);
    EXPECT_EQ(Display(L"A").percent, 60U);
}

TEST_F(PwmReentry, AValueThatCannotBeRestoredAfterTheEndStaysSaved) {
    Prepare(kOperations[0]);
    g_whileWaiting = [](Moment moment) {
        if (moment != Moment::BeforeSet || g_app.ending) return;
        EndTheSession();
        Display(L"P").refuses = true;
    };
    TogglePwmSafeByUser();
    g_whileWaiting = nullptr;
    EXPECT_EQ(g_app.pwmSavedBrightness, (SavedBrightness{{L"P", 30}}));
}

TEST_F(PwmReentry, DisplayChangeAtAnyMoment) {
    InterruptEverything(FireDisplayChange);
}

TEST_F(PwmReentry, AnEndOfTheSessionAtAnyMomentRestoresEveryDisplay) {
    InterruptEverything(EndTheSession);
}

TEST_F(PwmReentry, UnexpectedCallsAtAnyMomentSetAndSaveNoOtherValues) {
    InterruptEverythingUnexpectedly([] { RefreshPwmSafeTargets(true); });
    InterruptEverythingUnexpectedly(VerifyPwmLock);
}

TEST_F(PwmReentry, RandomNestedMessages) {
    for (std::uint32_t seed = 1; seed <= 20'000; ++seed)
        ASSERT_NO_FATAL_FAILURE(InterruptAtRandom(seed));
}
