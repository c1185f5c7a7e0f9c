// What the popup shows, as assistive technology is told: the controls and texts of the current panel,
// computed from AppState each time.
#pragma once

#include "app/state/accessible_state.h"
#include "ui/regions.h"

struct ShownControl {
    Region region = Region::None;  // None: a text
    RECT place = {};               // design units
    ControlFacts facts;
    const wchar_t* action = nullptr;  // the name of what a click does; null: a click does nothing by itself
};

// The controls in reading order. The child id of a control is its place in the order, from 1.
struct ShownPanel {
    int count = 0;
    ShownControl controls[kMaxShownControls];
};

ShownPanel ReadShownPanel();

// The popup as a whole, which contains the controls.
ShownControl ReadShownPopup();
