// Replaces the display targets and the settings file with fakes that record their calls:
//
//     enumerate          EnumerateTargets
//     count              CountTargets
//     A := 100           SetTargetBrightness of the display named A
//     save on            SaveSettings while the mode is on (or "save off")
//
// The test fails if a message that is dispatched during a query uses the list that the query is still
// filling.
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
    bool ignores = false;                // reports success and does not change
    bool refuses = false;                // reports failure and does not change
    std::uint32_t maximumPercent = 100;  // the highest that a set reaches
};

// One call of SetTargetBrightness.
struct DisplaySet {
    std::wstring name;
    std::uint32_t percent;
};

// The points at which a call that waits for displays may dispatch a message.
enum class Moment { BeforeListing, DuringListing, AfterListing, BeforeSet, AfterSet };

extern std::vector<FakeDisplay> g_displays;
extern std::vector<DisplaySet> g_sets;              // since the start of the test
extern std::vector<DisplayTargetList> g_lists;      // every completed list, since the start of the test
extern std::function<void(Moment)> g_whileWaiting;  // called at each moment, unless empty

// Resets the fakes and the record: no displays, and a new AppState with a main window.
void StartWithoutDisplays();

// The display with the name; fails the test if there is none.
FakeDisplay& Display(const std::wstring& name);
