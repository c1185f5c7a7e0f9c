// Reference model of the mode: computes what each event must do to the mode, its timers, the displays, the
// log and the settings, given the results of the event's enumerations. Written from the rules of the mode,
// independently of the controller.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "brightness/display_target.h"
#include "brightness/simulated_timers.h"

struct PwmModel {
    bool on = false;
    bool verifying = false;
    bool verifyingUserSwitch = false;
    bool confirmed = false;
    bool pendingLogged = false;
    bool slow = false;
    int failures = 0;
    std::map<std::wstring, std::uint32_t> before;  // percent of each display when it was first locked
    SimulatedTimers timers;

    // Of the current event.
    std::vector<DisplayTargetList> lists;  // results of its enumerations that are not used yet
    std::vector<std::string> actions;      // "A := 100", "log: ...", "save on"

    void Start();  // the window is created
    void Click();
    void Poll();
    void Verification();
    void DisplayChange();
    void PopupShown();

private:
    DisplayTargetList NextList();
    void UpdateConfirmation(const DisplayTargetList& list);
    void Lock(bool byUser);
    void Restore();
    void TurnOff();
    void StartPoll();
};
