// Long random sequences of events on a simulated clock. The displays accept, ignore or refuse a brightness,
// stop below it, drift away from it, connect and disconnect. After each event the program is compared with
// the reference model and checked against these invariants:
//
// - A saved value does not change while the mode is on; it is what the display read before its first lock.
// - A display is set to 100 or to its saved value, at most once per event, and to its saved value only when
//   the mode or the program ends.
// - When the mode or the program ends, every connected display that can be set has its previous brightness.
// - Timer 4 runs exactly while the mode is on, with 30 s while slowed and 2 s otherwise. Timer 5 runs exactly
//   while a verification is pending.
// - The mode is on only after a click that found a display, or if the settings have it on.
// - While the mode is off there is no verification, no confirmation and no saved value.
// - A lock is confirmed only if no verification is pending and all displays read at least 99 in the latest
//   enumeration. A verification of the user's switch is a pending verification.
// - The poll is slowed only after ten failures.
// - After the end of the program no display is set and no timer runs.
#include <algorithm>
#include <random>

#include "app/state/timers.h"
#include "brightness/pwm_fixture.h"
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

// How often each outcome occurred in all runs together: a simulation that never reaches one does not test it.
struct Reached {
    int locked, reverted, slowed, recovered, paceReset, waiting, refusedWithoutDisplay, endedLocked;
};

Reached g_reached;

class PwmRandom : public PwmFixture {
protected:
    void Run(std::uint32_t seed, int steps);

private:
    std::uint32_t RandomBelow(std::uint32_t below) { return static_cast<std::uint32_t>(random_() % below); }
    FakeDisplay& RandomDisplay() {
        return g_displays[RandomBelow(static_cast<std::uint32_t>(g_displays.size()))];
    }

    void CreateDisplays();
    void ChangeBehaviour(FakeDisplay* display);
    void SimulateUserChange();
    void PassTime(std::uint64_t duration);
    void ApplyDrifts(std::uint64_t until);
    void RunRandomEvent();
    void End();

    template <typename Act>
    void Event(const char* what, void (PwmModel::*expected)(), Act act);
    void ExpectModel();
    void ExpectInvariants(const SavedBrightness& savedBefore, bool onBefore);
    void ExpectSets(const SavedBrightness& savedBefore, bool modeEnded);
    void ExpectRestored(const SavedBrightness& savedBefore);
    void CountReached();

    std::mt19937 random_;
    PwmModel model_;
    std::vector<Drift> drifts_;
    std::map<std::wstring, std::uint32_t> drifting_;  // final percent of displays that do not stay at 100
    SavedBrightness firstRead_;                       // percent of each display at its first lock
    bool mayBeOn_ = false;
};

void PwmRandom::CreateDisplays() {
    g_displays = {{.name = L"P", .kind = TargetKind::WmiPanel},
                  {.name = L"Q", .kind = TargetKind::WmiPanel},
                  {.name = L"A"},
                  {.name = L"B"},
                  {.name = L"a"}};
    for (FakeDisplay& display : g_displays) {
        display.percent = RandomBelow(101);
        display.present = RandomBelow(2) == 0;
        ChangeBehaviour(&display);
    }
}

void PwmRandom::ChangeBehaviour(FakeDisplay* display) {
    const std::uint32_t behaviour = RandomBelow(10);
    display->ignores = behaviour == 0;
    display->refuses = behaviour == 1;
    display->maximumPercent = behaviour == 2 ? 90 + RandomBelow(11) : 100;
    drifting_.erase(display->name);
    if (behaviour == 3) drifting_[display->name] = RandomBelow(101);
}

void PwmRandom::SimulateUserChange() {
    // Users mostly change it by a little or to the maximum.
    FakeDisplay& display = RandomDisplay();
    display.percent = RandomBelow(3) == 0 ? 100 : 95 + RandomBelow(6);
    if (RandomBelow(2) == 0) display.percent = RandomBelow(101);
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
    const SavedBrightness savedBefore = g_app.pwmSavedBrightness;
    const bool onBefore = g_app.pwmSafe;
    g_calls.clear();
    g_sets.clear();
    g_lists.clear();
    act();
    model_.lists = g_lists;
    model_.actions.clear();
    (model_.*expected)();
    EXPECT_TRUE(model_.lists.empty())
        << "the displays were enumerated " << model_.lists.size() << " times too often";
    ExpectModel();
    if (!g_app.pwmSafe) mayBeOn_ = false;
    ExpectInvariants(savedBefore, onBefore);
    CountReached();
    for (const DisplaySet& set : g_sets) {
        if (drifting_.count(set.name) != 0)
            drifts_.push_back({set.name, g_clock + 100 + RandomBelow(5000), drifting_[set.name]});
    }
}

void PwmRandom::ExpectModel() {
    EXPECT_EQ(g_app.pwmSafe, model_.on);
    EXPECT_EQ(g_app.pwmVerifyPending, model_.verifying);
    EXPECT_EQ(g_app.pwmVerifyIsUserToggle, model_.verifyingUserSwitch);
    EXPECT_EQ(g_app.pwmLockConfirmed, model_.confirmed);
    EXPECT_EQ(g_app.pwmPendingLogged, model_.pendingLogged);
    EXPECT_EQ(g_app.pwmRetrySlowed, model_.slow);
    EXPECT_EQ(g_app.pwmRetryCount, model_.failures);
    EXPECT_EQ(g_app.pwmSavedBrightness, model_.before);
    EXPECT_EQ(g_timers, model_.timers);
    CallRecord actions = g_calls;
    std::erase_if(actions, [](const std::string& call) { return call == "enumerate" || call == "count"; });
    EXPECT_EQ(actions, model_.actions);
}

void PwmRandom::ExpectSets(const SavedBrightness& savedBefore, bool modeEnded) {
    std::vector<std::wstring> names;
    for (const DisplaySet& set : g_sets) {
        EXPECT_EQ(std::count(names.begin(), names.end(), set.name), 0) << "set twice: " << Narrow(set.name);
        names.push_back(set.name);
        if (modeEnded) {
            EXPECT_EQ(savedBefore.count(set.name), 1U) << Narrow(set.name);
            EXPECT_EQ(set.percent, savedBefore.at(set.name)) << Narrow(set.name);
        } else {
            EXPECT_EQ(set.percent, 100U) << Narrow(set.name);
        }
    }
}

void PwmRandom::ExpectRestored(const SavedBrightness& savedBefore) {
    for (const FakeDisplay& display : g_displays) {
        if (!display.present || savedBefore.count(display.name) == 0) continue;
        if (display.ignores || display.refuses) continue;
        EXPECT_EQ(display.percent, std::min(firstRead_[display.name], display.maximumPercent))
            << Narrow(display.name) << " was not restored";
    }
}

void PwmRandom::ExpectInvariants(const SavedBrightness& savedBefore, bool onBefore) {
    const bool modeEnded = (onBefore && !g_app.pwmSafe) || g_app.ending;
    ExpectSets(savedBefore, modeEnded);
    if (modeEnded) {
        ExpectRestored(savedBefore);
        firstRead_.clear();
    }
    if (onBefore && g_app.pwmSafe && !g_app.ending) {
        for (const auto& [name, percent] : savedBefore) {
            ASSERT_EQ(g_app.pwmSavedBrightness.count(name), 1U) << Narrow(name) << " was discarded";
            EXPECT_EQ(g_app.pwmSavedBrightness[name], percent) << Narrow(name) << " was overwritten";
        }
    }
    for (const auto& [name, percent] : g_app.pwmSavedBrightness)
        EXPECT_EQ(percent, firstRead_[name]) << Narrow(name) << " was saved with a wrong value";

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
    for (const std::string& action : model_.actions) {
        const auto contains = [&](const char* part) {
            return action.find(part) != std::string::npos ? 1 : 0;
        };
        g_reached.locked += contains("confirmed locked");
        g_reached.reverted += contains("reverting toggle");
        g_reached.slowed += contains("slowing retries");
        g_reached.recovered += contains("lock recovered");
        g_reached.paceReset += contains("pace reset");
    }
    if (g_app.pwmSafe && !g_app.pwmTargetsPresent) g_reached.waiting += 1;
    if (!g_app.pwmSafe && g_calls.size() == 4 && g_calls.back() == "save off") {
        g_reached.refusedWithoutDisplay += 1;
    }
}

void PwmRandom::PassTime(std::uint64_t duration) {
    const std::uint64_t until = g_clock + duration;
    while (!HasFailure()) {
        // Displays drift before the timer that enumerates them.
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

void PwmRandom::RunRandomEvent() {
    const std::uint32_t event = RandomBelow(100);
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
        SimulateUserChange();
    } else if (event < 42) {
        FakeDisplay& display = RandomDisplay();
        display.present = !display.present;
    } else if (event < 45) {
        for (FakeDisplay& display : g_displays)
            display.present = false;
    } else if (event < 52) {
        ChangeBehaviour(&RandomDisplay());
    } else if (event < 57) {
        for (FakeDisplay& display : g_displays) {
            display.ignores = display.refuses = false;
            display.maximumPercent = 100;
        }
        drifting_.clear();
    } else if (event < 72) {
        PassTime(35'000 + RandomBelow(60'000));
    } else {
        PassTime(RandomBelow(4'000));
    }
}

// The end of the session, and events that arrive after it.
void PwmRandom::End() {
    if (g_app.pwmSafe && !g_app.pwmSavedBrightness.empty()) g_reached.endedLocked += 1;
    const SavedBrightness saved = g_app.pwmSavedBrightness;
    g_sets.clear();
    g_app.ending = true;
    StopTimer(TimerId::PwmSafePoll);
    StopTimer(TimerId::PwmSafeVerify);
    ReleasePwmSafeLock();
    ExpectSets(saved, true);
    ExpectRestored(saved);
    EXPECT_TRUE(g_app.pwmSavedBrightness.empty());

    g_sets.clear();
    for (int i = 0; i < 12; ++i) {
        SimulateUserChange();
        RandomDisplay().present = true;
        switch (RandomBelow(4)) {
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
    CreateDisplays();
    g_whileWaiting = [this](Moment moment) {
        const bool locking = moment == Moment::BeforeSet && g_sets.back().percent == 100;
        if (!locking || g_app.ending) return;
        // Independent of the value that the program has saved by now.
        const std::wstring& name = g_sets.back().name;
        firstRead_.insert({name, Display(name).percent});
    };
    g_app.pwmSafe = model_.on = mayBeOn_ = RandomBelow(3) == 0;
    Event("start", &PwmModel::Start, [] { RestorePwmSafeFromSettings(); });
    for (int step = 0; step < steps && !HasFailure(); ++step)
        RunRandomEvent();
    if (!HasFailure()) End();
}

}  // namespace

TEST_F(PwmRandom, LongRuns) {
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

TEST_F(PwmRandom, ShortRuns) {
    for (std::uint32_t seed = 1001; seed <= 2500 && !HasFailure(); ++seed)
        Run(seed, 25);
}
