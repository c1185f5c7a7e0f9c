// What each event must do to the mode, its timers, its displays, the log and the settings, told by what the
// displays read at each look of that event. Written from the rules of the mode, in other words than the
// controller's.
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
    bool pendingSaid = false;
    bool slow = false;
    int failures = 0;
    std::map<std::wstring, std::uint32_t> before;  // what each display read when it was first locked
    SimulatedTimers timers;

    // Of the event under way.
    std::vector<DisplayTargetList> looks;  // not yet used
    std::vector<std::string> acts;         // "A := 100", "log: ...", "save on"

    void Start();  // the window is created
    void Click();
    void Poll();
    void Verification();
    void DisplayChange();
    void PopupShown();

private:
    DisplayTargetList Look();
    void Judge(const DisplayTargetList& seen);
    void Lock(bool byUser);
    void GiveBack();
    void TurnOff();
    void RunPoll();
};
