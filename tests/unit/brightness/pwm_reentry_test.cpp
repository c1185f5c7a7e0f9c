// Messages that are dispatched while displays answer. Each operation of the controller is interrupted once,
// at every moment at which it waits, by each message that could arrive; whatever comes of it, this must hold:
//
// - no list is given to anybody else while it is being filled (the fake displays see to that);
// - a display is set to 100 or to what it read before its lock, and that is what is noted;
// - once the operation is over, timer 4 runs exactly while the mode is on, timer 5 exactly while a
//   verification is outstanding; there is no verification, confirmation or note without the mode;
// - what is locked can be given back: with the mode on a display's old value is noted or is what it reads;
//   with the mode off, and after the program's end, it is what it reads;
// - the mode is the one that was saved last.
//
// A switch of the mode or a display change that comes while displays answer waits until the operation is
// over. No click arrives then, since COM leaves mouse messages in the queue; assistive technology may call at
// any moment.
#include <algorithm>
#include <iterator>
#include <random>

#include "app/state/messages.h"
#include "app/state/timers.h"
#include "brightness/pwm_bench.h"
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
    {"a poll that finds it slipped",
     [] {
         StartLockedByClick();
         Display(L"A").percent = 20;
     },
     FirePoll},
    {"a verification that succeeds", TogglePwmSafeByUser, FireVerification},
    {"a verification that undoes the user's switch",
     [] {
         Display(L"A").reachesAtMost = 90;
         TogglePwmSafeByUser();
     },
     FireVerification},
    {"a verification that fails otherwise",
     [] {
         StartLockedByClick();
         Display(L"A").reachesAtMost = 90;
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

// Twice as many polls as ends: few runs are to end early.
void (*const kMessages[])() = {FirePoll,
                               FirePoll,
                               FireVerification,
                               [] { RefreshPwmSafeTargets(false); },
                               TogglePwmSafeByUser,
                               FireDisplayChange,
                               EndTheSession};

class PwmReentry : public PwmBench {
protected:
    using Message = void (*)();

    // Interrupts every operation at each of its moments in turn.
    void InterruptEverything(Message message);
    // Likewise, by a call that no message makes at that moment: little can be asked then.
    void InterruptEverythingOutOfTurn(Message message);
    // Interrupts one operation at random moments by random messages, which are interrupted likewise.
    void InterruptAtRandom(std::uint32_t seed);
    void Prepare(const Operation& operation);
    int Interrupt(const Operation& operation, int at, Message message);

    bool modeAtStart_ = false;

private:
    void ExpectKnownValues();
    void ExpectSettled();
    void ExpectSettledThenAndLater();
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

// The mode that the settings file holds.
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
        EXPECT_EQ(percent, Before(name)) << "is noted for " << Narrow(name);
}

void PwmReentry::ExpectSettled() {
    ExpectKnownValues();
    const bool locking = g_app.pwmSafe && !g_app.ending;
    EXPECT_EQ(g_timers.count(4), locking ? 1U : 0U);
    EXPECT_EQ(g_timers.count(5), locking && g_app.pwmVerifyPending ? 1U : 0U);
    EXPECT_TRUE(!g_app.pwmVerifyPending || g_app.pwmSafe) << "a verification without the mode";
    EXPECT_TRUE(!g_app.pwmVerifyIsUserToggle || g_app.pwmVerifyPending)
        << "a user's verification without one";
    EXPECT_TRUE(!g_app.pwmLockConfirmed || g_app.pwmSafe) << "a confirmation without the mode";
    EXPECT_TRUE(locking || g_app.pwmSavedBrightness.empty()) << "a note without the mode";
    EXPECT_EQ(g_app.pwmSafe, LastSaved()) << "the mode is not the saved one";
    for (const FakeDisplay& display : g_displays) {
        const bool noted = locking && g_app.pwmSavedBrightness.count(display.name) != 0;
        if (noted) continue;
        EXPECT_EQ(display.percent, Before(display.name)) << "reads " << Narrow(display.name) << ", not noted";
    }
}

void PwmReentry::ExpectSettledThenAndLater() {
    ExpectSettled();
    if (g_app.ending) return;
    // From here on everything goes its usual way.
    PassTime(5000);
    ExpectSettled();
    if (g_app.pwmSafe) TogglePwmSafeByUser();
    ExpectSettled();
}

std::string Story() {
    std::string story;
    for (const std::string& call : g_calls)
        story += "\n  " + call;
    return story;
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
    const std::string story = Story();
    ExpectSettledThenAndLater();
    ASSERT_FALSE(HasFailure()) << "seed " << seed << ", " << operation.name << ":" << story;
}

void PwmReentry::InterruptEverythingOutOfTurn(Message message) {
    for (const Operation& operation : kOperations) {
        int moments = 1;
        for (int at = 0; at < moments; ++at) {
            moments = std::max(moments, Interrupt(operation, at, message));
            ExpectKnownValues();
            PassTime(5000);
            ExpectKnownValues();
            ASSERT_FALSE(HasFailure()) << operation.name << ", interrupted at its moment " << at;
        }
    }
}

void PwmReentry::InterruptEverything(Message message) {
    for (const Operation& operation : kOperations) {
        // Number -1 never comes: the first run is undisturbed.
        int moments = Interrupt(operation, -1, message);
        ExpectSettledThenAndLater();
        EXPECT_GE(moments, 3) << operation.name;
        for (int at = 0; at < moments; ++at) {
            moments = std::max(moments, Interrupt(operation, at, message));
            const std::string story = Story();
            ExpectSettledThenAndLater();
            ASSERT_FALSE(HasFailure())
                << operation.name << ", interrupted at its moment " << at << ":" << story;
        }
    }
}

}  // namespace

AMBREL_SEAM(PostMessageW, FakePostMessage);

TEST_F(PwmReentry, APollAtAnyMoment) {
    InterruptEverything(FirePoll);
}

TEST_F(PwmReentry, AVerificationAtAnyMoment) {
    InterruptEverything(FireVerification);
}

TEST_F(PwmReentry, ThePopupShownAtAnyMoment) {
    InterruptEverything([] { RefreshPwmSafeTargets(false); });
}

TEST_F(PwmReentry, ASwitchOfTheModeAtAnyMoment) {
    InterruptEverything(TogglePwmSafeByUser);
}

TEST_F(PwmReentry, ACallThatSwitchesTheModeIsTheLastWordWhateverItComesInto) {
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

TEST_F(PwmReentry, RepeatedSwitchesAskForTheSameAsTheFirst) {
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

TEST_F(PwmReentry, ADisplayChangeWhileDisplaysAnswerIsTakenUpBehindTheOperation) {
    Prepare(kOperations[3]);
    g_app.pwmRetrySlowed = true;
    g_whileWaiting = [](Moment moment) {
        if (moment != Moment::AmidListing) return;
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

// Its timer may have fired before the click that kills it was handled.
TEST_F(PwmReentry, AVerificationInTheMiddleOfSwitchingOffDoesNotComeAgain) {
    Prepare(kOperations[2]);
    ASSERT_TRUE(g_app.pwmVerifyPending);
    g_whileWaiting = [](Moment) { VerifyPwmLock(); };
    TogglePwmSafeByUser();
    g_whileWaiting = nullptr;
    EXPECT_EQ(g_timers.count(5), 0U);
}

TEST_F(PwmReentry, ASwitchOnIntoWhichTheEndComesIsKeptForTheNextStart) {
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

TEST_F(PwmReentry, AValueThatCannotBeSetAgainAfterTheEndStaysSaved) {
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

TEST_F(PwmReentry, ADisplayChangeAtAnyMoment) {
    InterruptEverything(FireDisplayChange);
}

TEST_F(PwmReentry, TheEndOfTheSessionAtAnyMoment) {
    InterruptEverything(EndTheSession);
}

TEST_F(PwmReentry, CallsOutOfTurnAtAnyMomentSetAndNoteNothingElse) {
    InterruptEverythingOutOfTurn([] { RefreshPwmSafeTargets(true); });
    InterruptEverythingOutOfTurn(VerifyPwmLock);
}

TEST_F(PwmReentry, AnyMessagesAtAnyMomentsWithinEachOther) {
    for (std::uint32_t seed = 1; seed <= 20'000; ++seed)
        ASSERT_NO_FATAL_FAILURE(InterruptAtRandom(seed));
}
