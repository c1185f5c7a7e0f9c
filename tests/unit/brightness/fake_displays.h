// Displays of no particular kind in the place of the real targets, the settings file in the place of the real
// one. In the record stand
//
//     enumerate          EnumerateTargets
//     count              CountTargets
//     A := 100           SetTargetBrightness of the display named A
//     save on            SaveSettings while the mode is on (or "save off")
//
// A list that is being filled must never be given to anybody else, as it would be by a message that is
// dispatched while displays answer: the test fails when that happens.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "brightness/display_target.h"
#include "support/seam.h"

AMBREL_USES_SEAMS(fake_displays);

struct FakeDisplay {
    std::wstring name;
    std::uint32_t percent = 50;
    TargetKind kind = TargetKind::DdcMonitor;
    bool present = true;
    bool ignores = false;               // says yes to a set and stays as it is
    bool refuses = false;               // says no to a set and stays as it is
    std::uint32_t reachesAtMost = 100;  // sticks there when set to more
};

// One set that arrived at a display.
struct DisplaySet {
    std::wstring name;
    std::uint32_t percent;
};

// When a message is dispatched within a call that waits for displays.
enum class Moment { BeforeListing, AmidListing, AfterListing, BeforeSet, AfterSet };

extern std::vector<FakeDisplay> g_displays;
extern std::vector<DisplaySet> g_sets;              // since the start of the test
extern std::vector<DisplayTargetList> g_lists;      // every list that was made, likewise
extern std::function<void(Moment)> g_whileWaiting;  // called at each of those moments, when there is one

// No displays, no sets, no lists, an empty record, a new AppState with a main window.
void StartWithoutDisplays();

FakeDisplay& Display(const std::wstring& name);
