// Every rectangle of the popup that reacts to the mouse, in design units. Panels draw from the same rows,
// sliders from the numbers that their rows are made of.
#pragma once

#include "win32/platform.h"

enum class Region {
    None,
    WarmthTrack,
    BrightnessTrack,
    GammaBanner,
    PwmCard,
    DayPreset,
    EveningPreset,
    NightPreset,
    Power,
    Gear,
    Close,
    LaunchRow,
    ExtremeDimRow,
    LegacyRow,
    Support,
};

// The rectangle of a region: left and top inclusive, right and bottom exclusive. Not for Region::None.
RECT RegionRect(Region region);

// What the strip between the sliders and the presets shows; always exactly one.
enum class StatusStrip { Banner, Card, Hint };
StatusStrip CurrentStatusStrip();

// The first region of the current panel that is present and holds the point, else Region::None.
Region HitTest(int x, int y);
