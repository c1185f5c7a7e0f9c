#include "brightness/pwm_model.h"

#include <gtest/gtest.h>

#include "support/call_record.h"

namespace {

bool AllAt100(const DisplayTargetList& list) {
    for (const DisplayTarget& target : list) {
        if (target.percent < 99) return false;
    }
    return !list.empty();
}

std::string CountAt100(const DisplayTargetList& list, const std::string& between) {
    int at100 = 0;
    for (const DisplayTarget& target : list)
        at100 += target.percent >= 99 ? 1 : 0;
    return std::to_string(at100) + between + std::to_string(list.size());
}

std::string LogLine(const std::string& line) {
    return "log: PWM-safe" + line;
}

std::string SetTo(const std::wstring& name, std::uint32_t percent) {
    return Narrow(name) + " := " + std::to_string(percent);
}

}  // namespace

DisplayTargetList PwmModel::NextList() {
    if (lists.empty()) {
        ADD_FAILURE() << "the displays were enumerated too few times";
        return {};
    }
    const DisplayTargetList list = lists.front();
    lists.erase(lists.begin());
    return list;
}

void PwmModel::UpdateConfirmation(const DisplayTargetList& list) {
    if (!verifying) confirmed = on && AllAt100(list);
}

void PwmModel::StartPoll() {
    const std::uint32_t period = slow ? 30000 : 2000;
    timers[4] = {g_clock + period, period};
}

void PwmModel::TurnOff() {
    on = verifying = verifyingUserSwitch = confirmed = false;
    timers.clear();
    before.clear();
}

void PwmModel::Restore() {
    if (before.empty()) return;
    for (const DisplayTarget& target : NextList()) {
        if (before.count(target.name) != 0) actions.push_back(SetTo(target.name, before[target.name]));
    }
    before.clear();
}

void PwmModel::Lock(bool byUser) {
    const DisplayTargetList list = NextList();
    if (list.empty() && byUser) {
        TurnOff();
        return;
    }
    if (!list.empty()) {
        on = verifying = true;
        confirmed = false;
        verifyingUserSwitch = verifyingUserSwitch || byUser;
        timers[5] = {g_clock + 750, 750};
    }
    for (const DisplayTarget& target : list) {
        before.insert({target.name, target.percent});
        actions.push_back(SetTo(target.name, 100));
    }
    StartPoll();
}

void PwmModel::Start() {
    UpdateConfirmation(NextList());
    if (!on) return;
    const std::size_t visible = lists.empty() ? 0 : lists.front().size();
    Lock(false);
    actions.push_back(LogLine(" restored from settings: " + std::to_string(visible) +
                              " target(s) visible at startup" +
                              (visible == 0 ? " (none yet - will re-probe via poll)" : "")));
}

void PwmModel::Click() {
    actions.push_back(LogLine(on ? " toggled OFF by user" : " toggled ON by user"));
    failures = 0;
    slow = false;
    if (on) {
        Restore();
        TurnOff();
        NextList();
    } else {
        Lock(true);
    }
    actions.push_back(on ? "save on" : "save off");
}

void PwmModel::Poll() {
    const DisplayTargetList list = NextList();
    UpdateConfirmation(list);
    if (on && !verifying && !AllAt100(list)) Lock(false);
}

void PwmModel::Verification() {
    timers.erase(5);
    const DisplayTargetList list = NextList();
    const bool userSwitch = verifyingUserSwitch;
    verifying = verifyingUserSwitch = false;
    confirmed = AllAt100(list);
    if (confirmed) {
        failures = 0;
        pendingLogged = false;
        if (slow) {
            slow = false;
            actions.push_back(LogLine(": lock recovered - normal polling resumed"));
            StartPoll();
        }
        actions.push_back(
            LogLine(": " + std::to_string(list.size()) + " display(s) confirmed locked at 100%"));
    } else if (userSwitch) {
        actions.push_back(
            LogLine(": 100% lock not confirmed (" + CountAt100(list, " of ") + ") - reverting toggle"));
        pendingLogged = false;
        Restore();
        TurnOff();
        actions.push_back("save off");
        NextList();
    } else {
        if (!pendingLogged)
            actions.push_back(
                LogLine(": lock pending (" + CountAt100(list, " of ") + " at 100%) - poll will re-assert"));
        pendingLogged = true;
        if (list.empty()) return;
        failures += 1;
        if (slow || failures < 10) return;
        slow = true;
        actions.push_back(LogLine(": display will not hold 100% after " + std::to_string(failures) +
                                  " attempts - slowing retries to 30s"));
        StartPoll();
    }
}

void PwmModel::DisplayChange() {
    UpdateConfirmation(NextList());
    if (!on) return;
    failures = 0;
    if (slow) actions.push_back(LogLine(": display change - retry pace reset"));
    slow = false;
    Lock(false);
}

void PwmModel::PopupShown() {
    UpdateConfirmation(NextList());
}
