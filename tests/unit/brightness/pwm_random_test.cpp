// Long random sequences of events on a simulated clock, with displays that obey, ignore, refuse, stick,
// drift, come and go. After each event two things are held against the program: the model of the event, and
// what must hold whatever happened:
//
// - a noted value stays as it is while the mode stays on, and is what the display read before its first lock;
// - a display is set to 100 or to its noted value, at most once in an event, and to the latter only when the
//   mode ends;
// - when the mode or the program ends, every present display that can be set has its old value;
// - timer 4 runs exactly while the mode is on, at 30 s exactly when slowed, else at 2 s; timer 5 runs exactly
//   while a verification is outstanding;
// - the mode is on only after a click that found a display, or as the settings had it; no verification and no
//   confirmation without the mode, no confirmation while verifying, none with a display that reads below 99
//   at the last look, no user's verification without one; nothing is noted with the mode off; slowed only
//   after ten failures;
// - after the program's end nothing is set and no timer runs.
#include <algorithm>
#include <random>

#include "app/state/timers.h"
#include "brightness/pwm_bench.h"
#include "brightness/pwm_model.h"
#include "brightness/simulated_timers.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(recorded_log);

namespace {

struct Drift {
    std::wstring name;
    std::uint64_t due;
    std::uint32_t percent;
};

// How often the interesting things happened in all runs together: a simulation that never gets there proves
// nothing.
struct Reached {
    int locked, reverted, slowed, recovered, paceReset, waiting, refusedWithoutDisplay, endedLocked;
};

Reached g_reached;

class PwmRandom : public PwmBench {
protected:
    void Run(std::uint32_t seed, int steps);

private:
    std::uint32_t Pick(std::uint32_t below) { return static_cast<std::uint32_t>(random_() % below); }
    FakeDisplay& AnyDisplay() { return g_displays[Pick(static_cast<std::uint32_t>(g_displays.size()))]; }

    void MakeDisplays();
    void ChangeTemper(FakeDisplay* display);
    void TurnByHand();
    void PassTime(std::uint64_t duration);
    void ApplyDrifts(std::uint64_t until);
    void SomethingHappens();
    void End();

    template <typename Act>
    void Event(const char* what, void (PwmModel::*expected)(), Act act);
    void ExpectModel();
    void ExpectInvariants(const SavedBrightness& notedBefore, bool onBefore);
    void ExpectSets(const SavedBrightness& notedBefore, bool modeEnded);
    void ExpectRestored(const SavedBrightness& notedBefore);
    void CountReached();

    std::mt19937 random_;
    PwmModel model_;
    std::vector<Drift> drifts_;
    std::map<std::wstring, std::uint32_t> drifting_;  // where to, of displays that do not stay at 100
    SavedBrightness firstRead_;                       // at the first lock, as the displays themselves know it
    bool mayBeOn_ = false;
};

void PwmRandom::MakeDisplays() {
    g_displays = {{.name = L"P", .kind = TargetKind::WmiPanel},
                  {.name = L"Q", .kind = TargetKind::WmiPanel},
                  {.name = L"A"},
                  {.name = L"B"},
                  {.name = L"a"}};
    for (FakeDisplay& display : g_displays) {
        display.percent = Pick(101);
        display.present = Pick(2) == 0;
        ChangeTemper(&display);
    }
}

void PwmRandom::ChangeTemper(FakeDisplay* display) {
    const std::uint32_t temper = Pick(10);
    display->ignores = temper == 0;
    display->refuses = temper == 1;
    display->reachesAtMost = temper == 2 ? 90 + Pick(11) : 100;
    drifting_.erase(display->name);
    if (temper == 3) drifting_[display->name] = Pick(101);
}

void PwmRandom::TurnByHand() {
    // Mostly by a little or to the end, as people do.
    FakeDisplay& display = AnyDisplay();
    display.percent = Pick(3) == 0 ? 100 : 95 + Pick(6);
    if (Pick(2) == 0) display.percent = Pick(101);
}

void PwmRandom::ApplyDrifts(std::uint64_t until) {
    for (const Drift& drift : drifts_) {
        if (drift.due <= until && drifting_.count(drift.name) != 0)
            Display(drift.name).percent = drift.percent;
    }
    std::erase_if(drifts_, [&](const Drift& drift) { return drift.due <= until; });
}

template <typename Act>
void PwmRandom::Event(const char* what, void (PwmModel::*expected)(), Act act) {
    const testing::ScopedTrace trace(__FILE__, __LINE__, what);
    const SavedBrightness notedBefore = g_app.pwmSavedBrightness;
    const bool onBefore = g_app.pwmSafe;
    g_calls.clear();
    g_sets.clear();
    g_lists.clear();
    act();
    model_.looks = g_lists;
    model_.acts.clear();
    (model_.*expected)();
    EXPECT_TRUE(model_.looks.empty())
        << "the displays were looked at " << model_.looks.size() << " times too often";
    ExpectModel();
    if (!g_app.pwmSafe) mayBeOn_ = false;
    ExpectInvariants(notedBefore, onBefore);
    CountReached();
    for (const DisplaySet& set : g_sets) {
        if (drifting_.count(set.name) != 0)
            drifts_.push_back({set.name, g_clock + 100 + Pick(5000), drifting_[set.name]});
    }
}

void PwmRandom::ExpectModel() {
    EXPECT_EQ(g_app.pwmSafe, model_.on);
    EXPECT_EQ(g_app.pwmVerifyPending, model_.verifying);
    EXPECT_EQ(g_app.pwmVerifyIsUserToggle, model_.verifyingUserSwitch);
    EXPECT_EQ(g_app.pwmLockConfirmed, model_.confirmed);
    EXPECT_EQ(g_app.pwmPendingLogged, model_.pendingSaid);
    EXPECT_EQ(g_app.pwmRetrySlowed, model_.slow);
    EXPECT_EQ(g_app.pwmRetryCount, model_.failures);
    EXPECT_EQ(g_app.pwmSavedBrightness, model_.before);
    EXPECT_EQ(g_timers, model_.timers);
    CallRecord acts = g_calls;
    std::erase_if(acts, [](const std::string& call) { return call == "enumerate" || call == "count"; });
    EXPECT_EQ(acts, model_.acts);
}

void PwmRandom::ExpectSets(const SavedBrightness& notedBefore, bool modeEnded) {
    std::vector<std::wstring> names;
    for (const DisplaySet& set : g_sets) {
        EXPECT_EQ(std::count(names.begin(), names.end(), set.name), 0) << "set twice: " << Narrow(set.name);
        names.push_back(set.name);
        if (modeEnded) {
            EXPECT_EQ(notedBefore.count(set.name), 1U) << Narrow(set.name);
            EXPECT_EQ(set.percent, notedBefore.at(set.name)) << Narrow(set.name);
        } else {
            EXPECT_EQ(set.percent, 100U) << Narrow(set.name);
        }
    }
}

void PwmRandom::ExpectRestored(const SavedBrightness& notedBefore) {
    for (const FakeDisplay& display : g_displays) {
        if (!display.present || notedBefore.count(display.name) == 0) continue;
        if (display.ignores || display.refuses) continue;
        EXPECT_EQ(display.percent, std::min(firstRead_[display.name], display.reachesAtMost))
            << Narrow(display.name) << " did not get its old value back";
    }
}

void PwmRandom::ExpectInvariants(const SavedBrightness& notedBefore, bool onBefore) {
    const bool modeEnded = (onBefore && !g_app.pwmSafe) || g_app.ending;
    ExpectSets(notedBefore, modeEnded);
    if (modeEnded) {
        ExpectRestored(notedBefore);
        firstRead_.clear();
    }
    if (onBefore && g_app.pwmSafe && !g_app.ending) {
        for (const auto& [name, percent] : notedBefore) {
            ASSERT_EQ(g_app.pwmSavedBrightness.count(name), 1U) << Narrow(name) << " was forgotten";
            EXPECT_EQ(g_app.pwmSavedBrightness[name], percent) << Narrow(name) << " was overwritten";
        }
    }
    for (const auto& [name, percent] : g_app.pwmSavedBrightness)
        EXPECT_EQ(percent, firstRead_[name]) << Narrow(name) << " was noted otherwise than it was";

    EXPECT_EQ(g_timers.count(4), g_app.pwmSafe ? 1U : 0U);
    if (g_app.pwmSafe) {
        EXPECT_EQ(g_timers[4].period, g_app.pwmRetrySlowed ? 30000U : 2000U);
    }
    EXPECT_EQ(g_timers.count(5), g_app.pwmVerifyPending ? 1U : 0U);
    EXPECT_EQ(g_timers.size(), g_timers.count(4) + g_timers.count(5));

    EXPECT_TRUE(!g_app.pwmSafe || mayBeOn_);
    EXPECT_TRUE(!g_app.pwmVerifyPending || g_app.pwmSafe);
    EXPECT_TRUE(!g_app.pwmVerifyIsUserToggle || g_app.pwmVerifyPending);
    EXPECT_TRUE(!g_app.pwmLockConfirmed || (g_app.pwmSafe && !g_app.pwmVerifyPending));
    EXPECT_TRUE(!g_app.pwmRetrySlowed || g_app.pwmRetryCount >= 10);
    EXPECT_TRUE(g_app.pwmSafe || g_app.pwmSavedBrightness.empty());
    if (g_app.pwmLockConfirmed) {
        EXPECT_FALSE(g_lists.back().empty());
        for (const DisplayTarget& target : g_lists.back())
            EXPECT_GE(target.percent, 99U) << Narrow(target.name);
    }
}

void PwmRandom::CountReached() {
    for (const std::string& act : model_.acts) {
        const auto says = [&](const char* part) { return act.find(part) != std::string::npos ? 1 : 0; };
        g_reached.locked += says("confirmed locked");
        g_reached.reverted += says("reverting toggle");
        g_reached.slowed += says("slowing retries");
        g_reached.recovered += says("lock recovered");
        g_reached.paceReset += says("pace reset");
    }
    if (g_app.pwmSafe && !g_app.pwmTargetsPresent) g_reached.waiting += 1;
    if (!g_app.pwmSafe && g_calls.size() == 4 && g_calls.back() == "save off") {
        g_reached.refusedWithoutDisplay += 1;
    }
}

void PwmRandom::PassTime(std::uint64_t duration) {
    const std::uint64_t until = g_clock + duration;
    while (!HasFailure()) {
        // Displays drift before the timer that looks at them.
        std::uint64_t next = until;
        for (const auto& [id, timer] : g_timers)
            next = std::min(next, timer.due);
        ApplyDrifts(next);
        const std::uintptr_t id = NextDueTimer(until);
        if (id == 0) return;
        // The model's poll is periodic too.
        model_.timers[id] = g_timers[id];
        if (id == 4) {
            Event("poll", &PwmModel::Poll, [] { RefreshPwmSafeTargets(true); });
        } else {
            Event("verification", &PwmModel::Verification, [] { VerifyPwmLock(); });
        }
    }
}

void PwmRandom::SomethingHappens() {
    const std::uint32_t event = Pick(100);
    if (event < 4) {
        const bool anyPresent = std::any_of(g_displays.begin(), g_displays.end(),
                                            [](const FakeDisplay& display) { return display.present; });
        if (!g_app.pwmSafe && anyPresent) mayBeOn_ = true;
        Event("click", &PwmModel::Click, [] { TogglePwmSafeByUser(); });
    } else if (event < 7) {
        Event("display change", &PwmModel::DisplayChange, [] { ReassertPwmSafeAfterChange(); });
    } else if (event < 17) {
        Event("popup shown", &PwmModel::PopupShown, [] { RefreshPwmSafeTargets(false); });
    } else if (event < 35) {
        TurnByHand();
    } else if (event < 42) {
        FakeDisplay& display = AnyDisplay();
        display.present = !display.present;
    } else if (event < 45) {
        for (FakeDisplay& display : g_displays)
            display.present = false;
    } else if (event < 52) {
        ChangeTemper(&AnyDisplay());
    } else if (event < 57) {
        for (FakeDisplay& display : g_displays) {
            display.ignores = display.refuses = false;
            display.reachesAtMost = 100;
        }
        drifting_.clear();
    } else if (event < 72) {
        PassTime(35'000 + Pick(60'000));
    } else {
        PassTime(Pick(4'000));
    }
}

// The end of the session, with whatever still arrives afterwards.
void PwmRandom::End() {
    if (g_app.pwmSafe && !g_app.pwmSavedBrightness.empty()) g_reached.endedLocked += 1;
    const SavedBrightness noted = g_app.pwmSavedBrightness;
    g_sets.clear();
    g_app.ending = true;
    StopTimer(TimerId::PwmSafePoll);
    StopTimer(TimerId::PwmSafeVerify);
    ReleasePwmSafeLock();
    ExpectSets(noted, true);
    ExpectRestored(noted);
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty());

    g_sets.clear();
    for (int i = 0; i < 12; ++i) {
        TurnByHand();
        AnyDisplay().present = true;
        switch (Pick(4)) {
            case 0: TogglePwmSafeByUser(); break;
            case 1: RefreshPwmSafeTargets(true); break;
            case 2: ReassertPwmSafeAfterChange(); break;
            default: RefreshPwmSafeTargets(false); break;
        }
    }
    EXPECT_TRUE(g_sets.empty()) << "a display is set after the program's end";
    EXPECT_TRUE(g_timers.empty()) << "a timer is started after the program's end";
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty());
}

void PwmRandom::Run(std::uint32_t seed, int steps) {
    const testing::ScopedTrace trace(__FILE__, __LINE__, "seed " + std::to_string(seed));
    StartWithoutDisplays();
    random_.seed(seed);
    model_ = {};
    drifts_.clear();
    drifting_.clear();
    firstRead_.clear();
    g_clock = 0;
    g_timers.clear();
    MakeDisplays();
    g_whileWaiting = [this](Moment moment) {
        const bool locking = moment == Moment::BeforeSet && g_sets.back().percent == 100;
        if (!locking || g_app.ending) return;
        // The program has noted the value by now, but only this is what the display itself reads.
        const std::wstring& name = g_sets.back().name;
        firstRead_.insert({name, Display(name).percent});
    };
    g_app.pwmSafe = model_.on = mayBeOn_ = Pick(3) == 0;
    Event("start", &PwmModel::Start, [] { RestorePwmSafeFromSettings(); });
    for (int step = 0; step < steps && !HasFailure(); ++step)
        SomethingHappens();
    if (!HasFailure()) End();
}

}  // namespace

TEST_F(PwmRandom, AFewDisplaysThroughLongDays) {
    g_reached = {};
    for (std::uint32_t seed = 1; seed <= 150 && !HasFailure(); ++seed)
        Run(seed, 2500);
    EXPECT_GT(g_reached.locked, 100);
    EXPECT_GT(g_reached.reverted, 100);
    EXPECT_GT(g_reached.slowed, 100);
    EXPECT_GT(g_reached.recovered, 50);
    EXPECT_GT(g_reached.paceReset, 50);
    EXPECT_GT(g_reached.waiting, 100);
    EXPECT_GT(g_reached.refusedWithoutDisplay, 50);
    EXPECT_GT(g_reached.endedLocked, 10);
}

TEST_F(PwmRandom, ManyShortRuns) {
    for (std::uint32_t seed = 1001; seed <= 2500 && !HasFailure(); ++seed)
        Run(seed, 25);
}
