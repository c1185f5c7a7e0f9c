// The clickable regions of the popup. ui/regions defines their rectangles.
#pragma once

enum class Region {
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
    None,
};
