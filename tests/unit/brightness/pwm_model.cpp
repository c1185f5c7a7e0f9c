#include "brightness/pwm_model.h"

#include <gtest/gtest.h>

#include "support/call_record.h"

namespace {

bool AllFull(const DisplayTargetList& seen) {
    for (const DisplayTarget& target : seen) {
        if (target.percent < 99) return false;
    }
    return !seen.empty();
}

std::string FullOf(const DisplayTargetList& seen, const std::string& between) {
    int full = 0;
    for (const DisplayTarget& target : seen)
        full += target.percent >= 99 ? 1 : 0;
    return std::to_string(full) + between + std::to_string(seen.size());
}

std::string Say(const std::string& line) {
    return "log: PWM-safe" + line;
}

std::string SetTo(const std::wstring& name, std::uint32_t percent) {
    return Narrow(name) + " := " + std::to_string(percent);
}

}  // namespace

DisplayTargetList PwmModel::Look() {
    if (looks.empty()) {
        ADD_FAILURE() << "the displays were looked at too few times";
        return {};
    }
    const DisplayTargetList seen = looks.front();
    looks.erase(looks.begin());
    return seen;
}

void PwmModel::Judge(const DisplayTargetList& seen) {
    if (!verifying) confirmed = on && AllFull(seen);
}

void PwmModel::RunPoll() {
    const std::uint32_t period = slow ? 30000 : 2000;
    timers[4] = {g_clock + period, period};
}

void PwmModel::TurnOff() {
    on = verifying = verifyingUserSwitch = confirmed = false;
    timers.clear();
    before.clear();
}

void PwmModel::GiveBack() {
    if (before.empty()) return;
    for (const DisplayTarget& target : Look()) {
        if (before.count(target.name) != 0) acts.push_back(SetTo(target.name, before[target.name]));
    }
    before.clear();
}

void PwmModel::Lock(bool byUser) {
    const DisplayTargetList seen = Look();
    if (seen.empty() && byUser) {
        TurnOff();
        return;
    }
    if (!seen.empty()) {
        on = verifying = true;
        confirmed = false;
        verifyingUserSwitch = verifyingUserSwitch || byUser;
        timers[5] = {g_clock + 750, 750};
    }
    for (const DisplayTarget& target : seen) {
        before.insert({target.name, target.percent});
        acts.push_back(SetTo(target.name, 100));
    }
    RunPoll();
}

void PwmModel::Start() {
    Judge(Look());
    if (!on) return;
    const std::size_t visible = looks.empty() ? 0 : looks.front().size();
    Lock(false);
    acts.push_back(Say(" restored from settings: " + std::to_string(visible) +
                       " target(s) visible at startup" +
                       (visible == 0 ? " (none yet - will re-probe via poll)" : "")));
}

void PwmModel::Click() {
    acts.push_back(Say(on ? " toggled OFF by user" : " toggled ON by user"));
    failures = 0;
    slow = false;
    if (on) {
        GiveBack();
        TurnOff();
        Look();
    } else {
        Lock(true);
    }
    acts.push_back(on ? "save on" : "save off");
}

void PwmModel::Poll() {
    const DisplayTargetList seen = Look();
    Judge(seen);
    if (on && !verifying && !AllFull(seen)) Lock(false);
}

void PwmModel::Verification() {
    timers.erase(5);
    const DisplayTargetList seen = Look();
    const bool userSwitch = verifyingUserSwitch;
    verifying = verifyingUserSwitch = false;
    confirmed = AllFull(seen);
    if (confirmed) {
        failures = 0;
        pendingSaid = false;
        if (slow) {
            slow = false;
            acts.push_back(Say(": lock recovered - normal polling resumed"));
            RunPoll();
        }
        acts.push_back(Say(": " + std::to_string(seen.size()) + " display(s) confirmed locked at 100%"));
    } else if (userSwitch) {
        acts.push_back(Say(": 100% lock not confirmed (" + FullOf(seen, " of ") + ") - reverting toggle"));
        pendingSaid = false;
        GiveBack();
        TurnOff();
        acts.push_back("save off");
        Look();
    } else {
        if (!pendingSaid)
            acts.push_back(
                Say(": lock pending (" + FullOf(seen, " of ") + " at 100%) - poll will re-assert"));
        pendingSaid = true;
        if (seen.empty()) return;
        failures += 1;
        if (slow || failures < 10) return;
        slow = true;
        acts.push_back(Say(": display will not hold 100% after " + std::to_string(failures) +
                           " attempts - slowing retries to 30s"));
        RunPoll();
    }
}

void PwmModel::DisplayChange() {
    Judge(Look());
    if (!on) return;
    failures = 0;
    if (slow) acts.push_back(Say(": display change - retry pace reset"));
    slow = false;
    Lock(false);
}

void PwmModel::PopupShown() {
    Judge(Look());
}
