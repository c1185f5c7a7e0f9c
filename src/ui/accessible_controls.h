// The controls and texts of the current panel, as assistive technology reads them. Computed from AppState on
// each call.
#pragma once

#include "app/state/accessible_state.h"
#include "ui/regions.h"

struct ShownControl {
    Region region = Region::None;  // None: a text
    RECT rect = {};                // design units
    ControlFacts facts;
    const wchar_t* action = nullptr;  // the name of the default action; null: a click alone does nothing
};

// The controls in reading order. The child id of a control is its position in this order, from 1.
struct ShownPanel {
    int count = 0;
    ShownControl controls[kMaxShownControls];
};

ShownPanel ReadShownPanel();

// The popup itself, which contains the controls.
ShownControl ReadShownPopup();
