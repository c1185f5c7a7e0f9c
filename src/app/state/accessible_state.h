// The part of AppState for screen readers and other assistive technology.
#pragma once

#include <cstddef>
#include <cstdint>

#include "app/state/region.h"

// The properties of one control that assistive technology reads. The strings live for the entire run; null
// means that there is none.
struct ControlFacts {
    std::uint32_t role = 0;   // ROLE_SYSTEM_...
    std::uint32_t state = 0;  // STATE_SYSTEM_..., without the flags that the window adds for all controls
    const wchar_t* name = nullptr;
    const wchar_t* description = nullptr;
    wchar_t value[16] = L"";  // of a slider
};

constexpr int kMaxShownControls = 11;

// The popup as the events sent so far describe it.
struct AnnouncedPopup {
    bool shown = false;
    bool settings = false;  // the settings panel
    int count = 0;
    ControlFacts controls[kMaxShownControls];
};

// A request to press a control or to set a slider.
struct AccessibleAction {
    Region region = {};
    double value = 0.0;  // of a slider, before it is clamped
};

constexpr int kMaxAccessibleActions = 32;

// Requests that the message loop has not performed yet, oldest first.
struct AccessibleActionQueue {
    int count = 0;
    AccessibleAction actions[kMaxAccessibleActions];
};
